# The installed package: headers, libraries, CMake package with version, pkg-config files.
include(CMakePackageConfigHelpers)

foreach(folder varnet64 varnet)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
            FILES_MATCHING PATTERN "*.h")
endforeach()

set(VARNET_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Varnet64)
# The kit has targets of its own, so that a host of the classes alone loads the first file only.
foreach(library Varnet64 Varnet64Kit)
    install(TARGETS ${library} EXPORT ${library}Targets
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(EXPORT ${library}Targets NAMESPACE Varnet64:: DESTINATION ${VARNET_CMAKE_DIR})
endforeach()
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
foreach(name varnet64 varnet64-kit)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
