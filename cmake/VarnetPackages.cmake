# Well-kept libraries, for this system and in cross builds. There, headers of this machine must not be found by way of
# /usr/include: those of libraries that are headers alone are linked into a folder of the build by themselves.
set(VARNET_HEADERS_DIR /usr/include CACHE PATH "Cross builds: where header-only libraries of this machine lie")
set(VARNET_GOOGLETEST_DIR /usr/src/googletest/googletest CACHE PATH "Cross builds: the source of GoogleTest")

# varnet_find_headers(PACKAGE TARGET FOLDER): a library that is headers alone, in FOLDER of an include directory.
function(varnet_find_headers package target folder)
    if(NOT CMAKE_CROSSCOMPILING)
        find_package(${package} REQUIRED)
        return()
    endif()
    if(NOT IS_DIRECTORY ${VARNET_HEADERS_DIR}/${folder})
        message(FATAL_ERROR "There is no folder ${folder} in ${VARNET_HEADERS_DIR}: install ${package}, or set VARNET_HEADERS_DIR.")
    endif()
    set(own ${PROJECT_BINARY_DIR}/headers)
    file(MAKE_DIRECTORY ${own})
    file(CREATE_LINK ${VARNET_HEADERS_DIR}/${folder} ${own}/${folder} SYMBOLIC)
    if(NOT TARGET ${target})
        add_library(${target} INTERFACE IMPORTED GLOBAL)
        target_include_directories(${target} INTERFACE ${own})
    endif()
endfunction()

# GoogleTest as a library of this system, or built from its source for another.
macro(varnet_find_googletest)
    if(NOT CMAKE_CROSSCOMPILING AND NOT VARNET_LIBCXX)
        find_package(GTest REQUIRED)
    elseif(NOT TARGET GTest::gtest_main)
        if(NOT EXISTS ${VARNET_GOOGLETEST_DIR}/CMakeLists.txt)
            message(FATAL_ERROR "There is no GoogleTest in ${VARNET_GOOGLETEST_DIR}: install Debian's googletest, or set VARNET_GOOGLETEST_DIR.")
        endif()
        set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
        set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
        # By the standard of our own sources: what stands in for a library's missing pieces is included there, too.
        set(CMAKE_CXX_STANDARD 20)
        add_subdirectory(${VARNET_GOOGLETEST_DIR} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
        unset(CMAKE_CXX_STANDARD)
    endif()
endmacro()

# zlib. For Windows its static library is taken, so that nothing more need lie beside the program.
macro(varnet_find_zlib)
    if(WIN32)
        set(ZLIB_USE_STATIC_LIBS ON)
        find_library(ZLIB_LIBRARY NAMES libz.a zlibstatic zs)
    endif()
    find_package(ZLIB REQUIRED)
endmacro()
