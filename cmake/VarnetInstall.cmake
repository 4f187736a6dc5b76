# The installed package: headers, library, CMake package with version, pkg-config file.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/varnet64 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")

install(TARGETS Varnet64 EXPORT Varnet64Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set(VARNET_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Varnet64)
install(EXPORT Varnet64Targets NAMESPACE Varnet64:: DESTINATION ${VARNET_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/Varnet64Config.cmake.in
                              ${CMAKE_CURRENT_BINARY_DIR}/Varnet64Config.cmake
                              INSTALL_DESTINATION ${VARNET_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/Varnet64ConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/Varnet64Config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/Varnet64ConfigVersion.cmake
        DESTINATION ${VARNET_CMAKE_DIR})

# Paths in the file are taken from where it stands, so that the installed tree can be moved, unless a folder was given
# as absolute.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(VARNET_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
    file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" up "${up}")
    set(VARNET_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(kind INCLUDE LIB)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}DIR}")
        set(VARNET_PC_${kind}DIR "${CMAKE_INSTALL_${kind}DIR}")
    else()
        set(VARNET_PC_${kind}DIR "\${prefix}/${CMAKE_INSTALL_${kind}DIR}")
    endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/varnet64.pc.in ${CMAKE_CURRENT_BINARY_DIR}/varnet64.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/varnet64.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
