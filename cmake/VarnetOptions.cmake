# What all targets of the project are built with: C++20, the warnings, and arithmetic whose bits are the same under
# every compiler and optimisation level.
add_library(varnet_options INTERFACE)
target_compile_features(varnet_options INTERFACE cxx_std_20)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(varnet_options INTERFACE
        -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # g++ 12 for Windows relies on the registers that its own copy of an inline function leaves alone, and then the
        # linker takes the copy of another file, which does not.
        target_compile_options(varnet_options INTERFACE -fno-ipa-ra)
    endif()
    if(VARNET_WERROR)
        target_compile_options(varnet_options INTERFACE -Werror)
    endif()
    if(VARNET_SANITIZE)
        target_compile_options(varnet_options INTERFACE
            -fsanitize=${VARNET_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
        target_link_options(varnet_options INTERFACE -fsanitize=${VARNET_SANITIZE})
    endif()
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
