# Run by CPack once every component lies in its folder, before the packages are written: what Debian wants beyond what
# is installed elsewhere.
find_program(gzip gzip REQUIRED)
find_program(strip strip REQUIRED)

# compress(FILE...): without name and time, so that every architecture's package holds the same bytes.
function(compress)
    foreach(file ${ARGN})
        execute_process(COMMAND "${gzip}" -9n "${file}" COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} key)
    set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
    set(usr "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr")
    set(documents "${usr}/share/doc/${package}")

    file(GLOB pages "${usr}/share/man/man*/*.[0-9]")
    compress(${pages})

    # It was copied, so CPack leaves it as it came.
    file(GLOB runtimes "${usr}/lib/*/kestrelid-*/libonnxruntime*.so*")
    foreach(runtime ${runtimes})
        execute_process(COMMAND "${strip}" --strip-unneeded "${runtime}" COMMAND_ERROR_IS_FATAL ANY)
    endforeach()

    # The file copyright takes the place of licences.
    if(NOT component STREQUAL Documentation)
        file(REMOVE_RECURSE "${usr}/share/doc")
    endif()
    file(COPY "${CPACK_KESTRELID_PACKAGING}/copyright" DESTINATION "${documents}" NO_SOURCE_PERMISSIONS)
    file(COPY_FILE "${CPACK_KESTRELID_PACKAGING}/changelog" "${documents}/changelog.Debian")
    compress("${documents}/changelog.Debian")

    foreach(kind any ${component})
        set(overrides "${CPACK_KESTRELID_PACKAGING}/lintian-overrides/${kind}")
        if(EXISTS "${overrides}")
            file(READ "${overrides}" tags)
            file(APPEND "${usr}/share/lintian/overrides/${package}" "${tags}")
        endif()
    endforeach()
endforeach()
