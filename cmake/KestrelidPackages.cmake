# Desktop integration of the demo, and Debian packages by CPack (tools/package): one for each install component.
if(TARGET kestrelid-demo)
    set(application org.kestrelid.Demo)
    set(desktop "${PROJECT_SOURCE_DIR}/packaging/desktop")
    set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
    install(FILES "${desktop}/${application}.desktop" DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT Tools)
    install(FILES "${desktop}/${application}.metainfo.xml" DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT Tools)
    install(FILES "${desktop}/${application}.svg" DESTINATION ${icons}/scalable/apps COMPONENT Tools)
    foreach(size 48 64 128 256)
        install(FILES "${desktop}/${application}-${size}.png" RENAME ${application}.png
            DESTINATION ${icons}/${size}x${size}/apps COMPONENT Tools)
    endforeach()
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/man/kestrelid-demo.1" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT Tools)
    set(completion "${PROJECT_SOURCE_DIR}/packaging/completion")
    install(FILES "${completion}/kestrelid-demo" DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Tools)
    install(FILES "${completion}/_kestrelid-demo" DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT Tools)
    install(FILES "${completion}/kestrelid-demo.fish" DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT Tools)
endif()

option(KESTRELID_PACKAGES "Prepare Debian packages, for an install prefix of /usr" OFF)
if(NOT KESTRELID_PACKAGES)
    return()
endif()
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR NOT BUILD_SHARED_LIBS OR NOT TARGET kestrelid-demo)
    message(FATAL_ERROR "Packages hold shared libraries, screens and programs, below /usr: see the preset packages")
endif()

set(packaging "${PROJECT_SOURCE_DIR}/packaging/debian")
set(number ${PROJECT_VERSION_MAJOR})  # of the interface: the SOVERSION

file(STRINGS "${packaging}/changelog" newest LIMIT_COUNT 1)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${packaging}/changelog")
if(NOT newest MATCHES "^kestrelid \\(([^-]+)-([^)]+)\\)" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/debian/changelog does not begin with version ${PROJECT_VERSION}")
endif()
set(version "${CMAKE_MATCH_1}-${CMAKE_MATCH_2}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrelid)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# As CPack itself would set it: anything else it puts above the summary of each package.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_PACKAGE_CONTACT "The Kestrelid authors <maintainers@kestrelid.example>")
set(CPACK_COMPONENTS_ALL Runtime Models ScreensRuntime Qml Development Documentation Python Tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${packaging}/finish.cmake")
set(CPACK_KESTRELID_PACKAGING "${packaging}")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

# kestrelid_package(COMPONENT NAME SECTION SUMMARY [MULTIARCH_SAME] [SONAME name] TEXT line...
#                   [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...] [PROVIDES ...] [BREAKS ...])
# Beside DEPENDS stands what dpkg-shlibdeps finds, which are not the project's own libraries.
# SONAME: of the library in it, up to `.so`; other packages that are built against it then depend on this one.
function(kestrelid_package component name section summary)
    cmake_parse_arguments(PACKAGE "MULTIARCH_SAME" "SONAME" "TEXT;DEPENDS;RECOMMENDS;SUGGESTS;PROVIDES;BREAKS" ${ARGN})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    list(JOIN PACKAGE_TEXT "\n" text)
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
    foreach(relation DEPENDS RECOMMENDS SUGGESTS PROVIDES BREAKS)
        list(JOIN PACKAGE_${relation} ", " names)
        set(CPACK_DEBIAN_${key}_PACKAGE_${relation} "${names}" PARENT_SCOPE)
    endforeach()
    if(PACKAGE_MULTIARCH_SAME)
        set(CPACK_DEBIAN_${key}_PACKAGE_MULTIARCH same PARENT_SCOPE)
    endif()
    if(PACKAGE_SONAME)
        # Before 1.0 a minor version may change the interface.
        set(next "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
        math(EXPR above "${PROJECT_VERSION_MINOR} + 1")
        set(control "${PROJECT_BINARY_DIR}/packaging/${name}")
        file(WRITE "${control}/shlibs"
            "${PACKAGE_SONAME} ${number} ${name} (>= ${next}), ${name} (<< ${PROJECT_VERSION_MAJOR}.${above}~)\n")
        file(WRITE "${control}/triggers" "activate-noawait ldconfig\n")
        set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${control}/shlibs;${control}/triggers" PARENT_SCOPE)
    endif()
endfunction()

kestrelid_package(Runtime libkestrelid-detection${number} libs "passport detector, library without Qt"
    MULTIARCH_SAME SONAME libkestrelid-detection
    TEXT "Tells whether a picture shows a passport, with a confidence, reasons and the"
         "recognised text. Reads pictures and cameras. Everything runs on the machine."
         "."
         "Needs neither Qt nor a display. The ONNX Runtime library comes with it."
    RECOMMENDS kestrelid-models-${number}
    SUGGESTS gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-pipewire)

# The folder's name holds the architecture, hence no package for all of them.
kestrelid_package(Models kestrelid-models graphics "passport detector, models" MULTIARCH_SAME
    TEXT "The networks with which the library libkestrelid-detection${number} finds outlines and"
         "reads text and machine-readable zones."
    PROVIDES "kestrelid-models-${number} (= ${version})")

# What QtQuick 6.4 itself imports too, but its package does not name.
set(qml_imports qml6-module-qtquick qml6-module-qtqml-workerscript)
kestrelid_package(ScreensRuntime libkestrelid${number} libs "passport scanning screens, library"
    MULTIARCH_SAME SONAME libkestrelid
    TEXT "A screen that scans a passport and one that shows the photo, in QML and as"
         "widgets, for host applications with Qt 6."
    DEPENDS "libkestrelid-detection${number} (= ${version})" ${qml_imports}
            gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    RECOMMENDS kestrelid-models-${number} gstreamer1.0-pipewire gstreamer1.0-libcamera)

kestrelid_package(Qml qml6-module-kestrelid libs "passport scanning screens, QML module" MULTIARCH_SAME
    TEXT "Makes `import Kestrelid` work for every Qt 6 program on the machine."
    DEPENDS "libkestrelid${number} (= ${version})" ${qml_imports})

# The screens' library is recommended only, so that a host without Qt can be built without it.
kestrelid_package(Development libkestrelid-dev libdevel "passport scanning, development files" MULTIARCH_SAME
    TEXT "Headers, CMake package and pkg-config modules. The CMake component Detection"
         "needs no Qt, the component Screens needs the recommended packages."
    DEPENDS "libkestrelid-detection${number} (= ${version})"
    RECOMMENDS "libkestrelid${number} (= ${version})" qt6-base-dev
    SUGGESTS qt6-declarative-dev qml6-module-kestrelid kestrelid-models
    BREAKS "libkestrelid${number} (<< ${version})" "libkestrelid${number} (>> ${version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

# The site is what tools/docs built.
set(documents "${CMAKE_INSTALL_DATADIR}/doc/kestrelid-doc")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/build/docs/" DESTINATION "${documents}/html" COMPONENT Documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${documents}" COMPONENT Documentation
    PATTERN "__pycache__" EXCLUDE)
kestrelid_package(Documentation kestrelid-doc doc "passport scanning, documents and examples"
    TEXT "Guides and the reference of the C++ and C interfaces, as a site to read"
         "offline, and the examples, each of which builds by itself."
    SUGGESTS libkestrelid-dev)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)

# As pip would lay it, so that `pip list` and importlib.metadata know it; compiled when it is installed, as Debian does.
set(modules lib/python3/dist-packages)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/bindings/python/kestrelid" DESTINATION ${modules} COMPONENT Python
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
set(metadata "${PROJECT_BINARY_DIR}/packaging/python")
file(WRITE "${metadata}/METADATA" "Metadata-Version: 2.1\nName: kestrelid\nVersion: ${PROJECT_VERSION}\n"
    "Summary: Whether a picture shows a passport, and its machine-readable zone\nLicense: Apache-2.0\nRequires-Python: >=3.9\n")
file(WRITE "${metadata}/INSTALLER" "dpkg\n")
file(WRITE "${metadata}/top_level.txt" "kestrelid\n")
install(FILES "${metadata}/METADATA" "${metadata}/INSTALLER" "${metadata}/top_level.txt"
    DESTINATION "${modules}/kestrelid-${PROJECT_VERSION}.dist-info" COMPONENT Python)
# The interface for C keeps its functions within a minor version.
math(EXPR above "${PROJECT_VERSION_MINOR} + 1")
kestrelid_package(Python python3-kestrelid python "passport detector, Python 3 package"
    TEXT "Tells whether a picture shows a passport: paths, bytes, NumPy arrays and Pillow"
         "images. Typed. Everything runs on the machine."
    DEPENDS "python3:any" "libkestrelid-detection${number} (>= ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})"
            "libkestrelid-detection${number} (<< ${PROJECT_VERSION_MAJOR}.${above}~)"
    RECOMMENDS kestrelid-models-${number}
    SUGGESTS python3-numpy python3-pil)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${packaging}/python3/postinst;${packaging}/python3/prerm")

kestrelid_package(Tools kestrelid-tools graphics "passport detector, command line and demo"
    TEXT "The program kestrelid judges pictures and what a camera sees. The program"
         "kestrelid-demo shows the scanning screens, with a drawn passport where there is"
         "no camera."
    DEPENDS "libkestrelid${number} (= ${version})"
    RECOMMENDS kestrelid-models-${number} qt6-wayland
    SUGGESTS poppler-utils)

include(CPack)
