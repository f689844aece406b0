# Warnings and sanitizers for everything of the project; consumers never see them.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor)
if(KESTRELID_STRICT)
    add_compile_options(-Werror)
endif()
if(KESTRELID_SANITIZE)
    add_compile_options(-fsanitize=${KESTRELID_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${KESTRELID_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # g++ 12 takes an empty optional for an uninitialised value once a sanitizer has rewritten its checks.
        add_compile_options(-Wno-maybe-uninitialized)
        if(KESTRELID_SANITIZE MATCHES thread)
            add_compile_options(-Wno-tsan)  # it does not follow the fences that Asio uses beside its locks
        endif()
    endif()
endif()
