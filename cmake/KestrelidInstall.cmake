# Installation: libraries, public headers, what the recognisers load at run time, and the package that
# find_package(Kestrelid COMPONENTS Detection) reads. Everything is found relative to where it lies, so that the
# installed tree may be moved.
include(CMakePackageConfigHelpers)

# The public headers, by the folder; each must compile alone (target all_verify_interface_header_sets).
file(GLOB public_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/kestrelid/*.h")
target_sources(KestrelidDetection PUBLIC FILE_SET HEADERS
    BASE_DIRS "${PROJECT_SOURCE_DIR}/include" "${PROJECT_BINARY_DIR}/include"
    FILES ${public_headers} "${PROJECT_BINARY_DIR}/include/kestrelid/Export.h")
set_target_properties(KestrelidDetection PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)

if(NOT BUILD_SHARED_LIBS)
    message(STATUS "Kestrelid: only shared libraries can be installed")
    return()
endif()

file(RELATIVE_PATH library_from_program
    "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
if(TARGET kestrelid)
    set_target_properties(kestrelid PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_program}")
endif()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Kestrelid")
install(TARGETS KestrelidDetection EXPORT KestrelidDetectionTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT KestrelidDetectionTargets NAMESPACE Kestrelid:: DESTINATION ${package_folder})

# Beside the library, where it looks for them first.
install(DIRECTORY "${KESTRELID_DEPS_DIR}/resources/" DESTINATION ${CMAKE_INSTALL_LIBDIR}/kestrelid
    FILES_MATCHING PATTERN "*.onnx" PATTERN "*.txt" PATTERN "libonnxruntime*.so*")
install(FILES "${PROJECT_SOURCE_DIR}/models/outline-net.onnx" DESTINATION ${CMAKE_INSTALL_LIBDIR}/kestrelid)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/NOTICE" DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Before 1.0 a minor version may change the interface.
set(compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(compatibility SameMinorVersion)
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KestrelidConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/KestrelidConfig.cmake" INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KestrelidConfigVersion.cmake" COMPATIBILITY ${compatibility})
install(FILES "${PROJECT_BINARY_DIR}/KestrelidConfig.cmake" "${PROJECT_BINARY_DIR}/KestrelidConfigVersion.cmake"
    DESTINATION ${package_folder})
