# What an installation consists of, besides the libraries and programs that install themselves: headers, the package
# for find_package(corvane) and corvane.pc for pkg-config. An installation may be moved as a whole.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/corvane platform/common/include/corvane platform/input/include/corvane
                  platform/procman/include/corvane
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h" PATTERN "DFB*" EXCLUDE)

# Programs and libraries find each other by their place in the installation.
file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(corvane corvane-common corvane-input corvane-procman PROPERTIES INSTALL_RPATH "$ORIGIN")
foreach(program corvanectl corvane-procmand)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
    endif()
endforeach()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/corvane)
configure_package_config_file(cmake/corvane-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/corvane-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/corvane-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(EXPORT corvane-targets NAMESPACE corvane:: DESTINATION ${package_folder})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/corvane-config-version.cmake
        DESTINATION ${package_folder})

set(pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${pkgconfig_folder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/corvane.pc.in corvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# DirectFB's part: an application asks for it by find_package(corvane COMPONENTS directfb) or corvane-directfb.pc.
if(CORVANE_WITH_DIRECTFB)
    install(FILES include/corvane/DFBCursor.h include/corvane/DFBInputSink.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane)
    install(FILES platform/input/include/corvane/input/DFBInputEvents.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane/input)
    set_target_properties(corvane-directfb PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(EXPORT corvane-directfb-targets NAMESPACE corvane:: DESTINATION ${package_folder})
    configure_file(cmake/corvane-directfb.pc.in corvane-directfb.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane-directfb.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    # With the prefix /usr/local this is where DFBCursor looks for the pointer's picture.
    install(FILES assets/cursor.png DESTINATION etc)
endif()
