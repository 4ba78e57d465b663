# What an installation consists of, besides the libraries and programs that install themselves, by components:
#   runtime        the libraries that every application needs
#   directfb       the library for those that draw with DirectFB, and the pointer's picture
#   tools          corvanectl
#   procmand       the process manager, and what systemd has to know of it
#   development    headers, the package for find_package(corvane), corvane.pc for pkg-config
#   documentation  documents, and the examples to copy
# An installation may be moved as a whole, but for the unit of systemd, which names its program.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/corvane platform/common/include/corvane platform/input/include/corvane
                  platform/procman/include/corvane
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h" PATTERN "DFB*" EXCLUDE)

# Programs and libraries find each other by their place in the installation.
file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(corvane corvane-common corvane-input corvane-procman PROPERTIES INSTALL_RPATH "$ORIGIN")
foreach(program corvanectl corvane-procmand)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
    endif()
endforeach()

# What a program links that is linked with static libraries; shared ones bring it along.
set(corvane_pc_requires)
if(NOT BUILD_SHARED_LIBS)
    set(corvane_pc_requires "libudev libevdev jsoncpp simdjson")
endif()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/corvane)
configure_package_config_file(cmake/corvane-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/corvane-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/corvane-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(EXPORT corvane-targets NAMESPACE corvane:: DESTINATION ${package_folder} COMPONENT development)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/corvane-config-version.cmake
        DESTINATION ${package_folder} COMPONENT development)

set(pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${pkgconfig_folder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/corvane.pc.in corvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# DirectFB's part: an application asks for it by find_package(corvane COMPONENTS directfb) or corvane-directfb.pc.
if(CORVANE_WITH_DIRECTFB)
    install(FILES include/corvane/DFBCursor.h include/corvane/DFBInputSink.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane COMPONENT development)
    install(FILES platform/input/include/corvane/input/DFBInputEvents.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane/input COMPONENT development)
    set_target_properties(corvane-directfb PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(EXPORT corvane-directfb-targets NAMESPACE corvane:: DESTINATION ${package_folder} COMPONENT development)
    configure_file(cmake/corvane-directfb.pc.in corvane-directfb.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/corvane-directfb.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT development)
    # With the prefix /usr/local this is where DFBCursor looks for the pointer's picture.
    install(FILES assets/cursor.png DESTINATION etc COMPONENT directfb)
endif()

install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
add_subdirectory(packaging)

# Removes what the last installations of this build folder have installed.
if(PROJECT_IS_TOP_LEVEL)
    add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -D BUILD=${CMAKE_BINARY_DIR}
                                        -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/CorvaneUninstall.cmake)
endif()
