# What the code takes for granted of a system, and what it needs there. src/foundation/Platform.h holds the compiler to
# the same.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
    message(FATAL_ERROR "Varnet64 needs a system of 64 bits: meshes and files are larger than ${bits} bits count. This compiler makes programs of ${bits} bits; take the one for x86-64 or for 64-bit ARM, without -m32.")
endif()
if(NOT CMAKE_CXX_BYTE_ORDER STREQUAL "LITTLE_ENDIAN")
    message(FATAL_ERROR "Varnet64 needs a little-endian processor, as x86-64 and 64-bit ARM are: its files hold numbers with the lowest byte first, and nobody has tried another order.")
endif()

if(VARNET_LIBCXX)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "VARNET_LIBCXX needs clang: set CMAKE_CXX_COMPILER to clang++.")
    endif()
    add_compile_options(-stdlib=libc++)
    add_link_options(-stdlib=libc++)
endif()

# What the standard library lacks of C++20 comes from cmake/compat, ahead of all sources.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS "-std=c++20")
if(VARNET_LIBCXX)
    string(APPEND CMAKE_REQUIRED_FLAGS " -stdlib=libc++")
endif()
check_cxx_source_compiles("#include <atomic>
#include <charconv>
#include <memory>
int main(int argc, char** text) {
    double value = 0;
    return std::from_chars(text[0], text[0] + 1, value).ptr == text[0] && std::atomic_ref<int>(argc).load() == 2 &&
           std::make_unique_for_overwrite<int[]>(3)[0] == 0;
}" VARNET_HAS_WHOLE_LIBRARY)
unset(CMAKE_REQUIRED_FLAGS)
if(NOT VARNET_HAS_WHOLE_LIBRARY)
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${PROJECT_SOURCE_DIR}/cmake/compat/Missing.h>")
endif()

if(WIN32)
    # Windows looks for libraries beside the program: all programs of a build lie in one folder with them.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
    # Names of files and functions of the system that take UTF-16, and those of Windows 7 and later.
    add_compile_definitions(UNICODE _UNICODE _WIN32_WINNT=0x0601 NOMINMAX)
    if(MINGW)
        # The compiler's own libraries: the program, the library and the kit throw to each other and so share one.
        foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
            execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
            if(NOT IS_ABSOLUTE "${file}")
                find_file(VARNET_${name} ${name} PATH_SUFFIXES lib bin)
                set(file ${VARNET_${name}})
            endif()
            list(APPEND VARNET_RUNTIME_LIBRARIES ${file})
        endforeach()
        file(COPY ${VARNET_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
        install(FILES ${VARNET_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
endif()
