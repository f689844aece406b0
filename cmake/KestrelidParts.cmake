# A part is one folder's code, compiled once into objects. The library is made of all parts; the tests link the same
# objects, so that they reach what the library hides.

# kestrelid_part(NAME SOURCES file... [LINKS library...] [SYSTEM_INCLUDES folder...])
function(kestrelid_part name)
    cmake_parse_arguments(PART "" "" "SOURCES;LINKS;SYSTEM_INCLUDES" ${ARGN})
    set(target kestrelid_part_${name})
    add_library(${target} OBJECT ${PART_SOURCES})
    target_include_directories(${target}
        PUBLIC "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include" "${PROJECT_BINARY_DIR}/include")
    target_include_directories(${target} SYSTEM PRIVATE ${PART_SYSTEM_INCLUDES})
    target_link_libraries(${target} PRIVATE ${PART_LINKS})
    target_compile_definitions(${target} PRIVATE Kestrelid_EXPORTS)
    set_property(GLOBAL APPEND PROPERTY KESTRELID_PARTS ${target})
    set_property(GLOBAL APPEND PROPERTY KESTRELID_PART_LINKS ${PART_LINKS})
endfunction()
