# Installation: libraries, public headers, what the recognisers load at run time, the QML module, and what find_package()
# and pkg-config read. Everything is found relative to where it lies, so that the installed tree may be moved.
#
# Components: Runtime and ScreensRuntime (a shared library each), Models, Qml, Development, Tools.
include(CMakePackageConfigHelpers)

# The public headers, by the folder; each must compile alone (target all_verify_interface_header_sets).
file(GLOB public_headers CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/include/kestrelid/*.h" "${PROJECT_SOURCE_DIR}/include/kestrelid/detection/*.h")
target_sources(KestrelidDetection PUBLIC FILE_SET HEADERS
    BASE_DIRS "${PROJECT_SOURCE_DIR}/include" "${PROJECT_BINARY_DIR}/include"
    FILES ${public_headers} "${PROJECT_BINARY_DIR}/include/kestrelid/Export.h")
set_target_properties(KestrelidDetection PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Kestrelid")
# What belongs to one interface version lies in folders with its number, so that the next one fits beside it.
set(resources "kestrelid-${PROJECT_VERSION_MAJOR}")
set(resource_folder "${CMAKE_INSTALL_LIBDIR}/${resources}")
set(translation_folder "${KESTRELID_TRANSLATIONS_FOLDER}")
set(KESTRELID_QML_DIR "${CMAKE_INSTALL_LIBDIR}/qt6/qml" CACHE STRING
    "Where the QML module is installed, below the prefix: Qt's own folder where the prefix is Qt's")

# from_folder(FOLDER VARIABLE): the way from an installed folder to the libraries, for the loader.
function(from_folder folder variable)
    file(RELATIVE_PATH way "${CMAKE_INSTALL_PREFIX}/${folder}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(${variable} "$ORIGIN/${way}" PARENT_SCOPE)
endfunction()

from_folder("${CMAKE_INSTALL_BINDIR}" libraries_from_program)
foreach(program kestrelid kestrelid-demo)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES INSTALL_RPATH "${libraries_from_program}")
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
    endif()
endforeach()

# install_library(TARGET NAME COMPONENT): with the CMake targets file that holds it.
function(install_library target name component)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${target} EXPORT Kestrelid${name}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT Development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development)
    install(EXPORT Kestrelid${name}Targets NAMESPACE Kestrelid:: DESTINATION ${package_folder} COMPONENT Development)
endfunction()

install_library(KestrelidDetection Detection Runtime)
install(DIRECTORY "${KESTRELID_DEPS_DIR}/resources/" DESTINATION ${resource_folder} COMPONENT Runtime
    FILES_MATCHING PATTERN "libonnxruntime*.so*")
install(FILES ${KESTRELID_MODELS} DESTINATION ${resource_folder} COMPONENT Models)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/NOTICE" DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT Runtime)

if(KESTRELID_SCREENS AND BUILD_SHARED_LIBS)
    install_library(KestrelidScreens Screens ScreensRuntime)
    foreach(language ${KESTRELID_LANGUAGES})
        install(FILES "${PROJECT_BINARY_DIR}/translations/kestrelid_${language}.qm" DESTINATION ${translation_folder}
            COMPONENT ScreensRuntime)
    endforeach()
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/translations/kestrelid.ts" DESTINATION ${translation_folder} COMPONENT Development)

    set(module_folder "${KESTRELID_QML_DIR}/Kestrelid")
    from_folder("${module_folder}" libraries_from_module)
    set_target_properties(KestrelidQmlPlugin PROPERTIES INSTALL_RPATH "${libraries_from_module}")
    install(TARGETS KestrelidQmlPlugin LIBRARY DESTINATION ${module_folder} COMPONENT Qml)
    install(FILES "${PROJECT_BINARY_DIR}/qml/Kestrelid/qmldir" "${PROJECT_BINARY_DIR}/qml/Kestrelid/KestrelidScreens.qmltypes"
        DESTINATION ${module_folder} COMPONENT Qml)
elseif(KESTRELID_SCREENS)
    message(STATUS "Kestrelid: of a static build the Qt-free library alone is installed")
endif()

# Before 1.0 a minor version may change the interface.
set(compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(compatibility SameMinorVersion)
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KestrelidConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/KestrelidConfig.cmake" INSTALL_DESTINATION ${package_folder}
    PATH_VARS KESTRELID_QML_DIR translation_folder)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KestrelidConfigVersion.cmake" COMPATIBILITY ${compatibility})
set(package_files "${PROJECT_BINARY_DIR}/KestrelidConfig.cmake" "${PROJECT_BINARY_DIR}/KestrelidConfigVersion.cmake")
if(NOT BUILD_SHARED_LIBS)
    list(APPEND package_files "${PROJECT_SOURCE_DIR}/cmake/KestrelidLibraries.cmake")
endif()
install(FILES ${package_files} DESTINATION ${package_folder} COMPONENT Development)

# pkg-config: prefix is reckoned from where the file lies.
set(pc_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH prefix_from_pc "${CMAKE_INSTALL_PREFIX}/${pc_folder}" "${CMAKE_INSTALL_PREFIX}")
# Only who links the static library asks for what is in it; pkg-config would look for these modules
# whenever it is asked for flags.
set(pc_private "")
if(NOT BUILD_SHARED_LIBS)
    list(JOIN KESTRELID_PC_REQUIRES ", " pc_private)
    string(PREPEND pc_private "Requires.private: ")
    string(APPEND pc_private "\nLibs.private: -lopencv_imgproc -lopencv_core -lstdc++ -ldl -pthread\n")
endif()
set(pc_modules kestrelid-detection)
if(TARGET KestrelidScreens AND BUILD_SHARED_LIBS)
    list(APPEND pc_modules kestrelid)
endif()
foreach(module ${pc_modules})
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in" "${PROJECT_BINARY_DIR}/${module}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${module}.pc" DESTINATION ${pc_folder} COMPONENT Development)
endforeach()
