# The exported names of the shared libraries: what packaging/abi/*.map.in lists, under a version node that follows the SOVERSION.
# Everything else stays inside, also what the standard library and Asio instantiate there, so that a host's own copies
# of these are never bound to this library's.

# kestrelid_symbols(TARGET LIST): LIST is a file of packaging/abi/ without its ending.
function(kestrelid_symbols target list)
    set(node KESTRELID_${PROJECT_VERSION_MAJOR})
    set(map "${PROJECT_BINARY_DIR}/abi/${list}.map")
    configure_file("${PROJECT_SOURCE_DIR}/packaging/abi/${list}.map.in" "${map}" @ONLY)
    # A host may unload what it has loaded, while the library's threads still end by themselves.
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}" LINKER:-z,nodelete)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
endfunction()

# Static libraries have no such list, and sanitizers must see the same object in every module.
if(BUILD_SHARED_LIBS AND NOT KESTRELID_SANITIZE AND CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF")
    kestrelid_symbols(KestrelidDetection kestrelid-detection)
    if(KESTRELID_SCREENS)
        kestrelid_symbols(KestrelidScreens kestrelid)
    endif()
endif()
