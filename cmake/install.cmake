# What an installation has, in components: library, development, desktop, simulator, tools. Included once all targets are there.
#
# The motion server's client library libtremalink.so is looked for in this order: LD_LIBRARY_PATH, beside liborsanta.so,
# /usr/local/lib, and last the simulator's, which has a folder of its own. So a machine's own takes the place of the simulator
# without a change to any installed file. Where the simulator is not installed, the system's other places are looked into too.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(private_lib ${CMAKE_INSTALL_LIBDIR}/orsanta)
set(private_bin ${CMAKE_INSTALL_LIBEXECDIR}/orsanta)

# Where the target, installed to that place, finds the library and the client library.
function(orsanta_finds_client_library target destination)
  file(RELATIVE_PATH to_lib /${destination} /${CMAKE_INSTALL_LIBDIR})
  string(REGEX REPLACE "/$" "" beside "$ORIGIN/${to_lib}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${beside};/usr/local/lib;${beside}/orsanta/simulator")
endfunction()
orsanta_finds_client_library(orsanta ${CMAKE_INSTALL_LIBDIR})
orsanta_finds_client_library(orsanta_app ${CMAKE_INSTALL_BINDIR})
orsanta_finds_client_library(orsanta_selftest ${private_bin})
orsanta_finds_client_library(orsanta_doctor ${private_bin})

install(TARGETS orsanta LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS tremalink LIBRARY DESTINATION ${private_lib}/simulator COMPONENT simulator)
install(TARGETS orsanta_app RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(TARGETS orsanta_selftest orsanta_doctor RUNTIME DESTINATION ${private_bin} COMPONENT tools)
install(FILES packaging/man/orsanta.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
if(TARGET orsanta_desktop)
  install(TARGETS orsanta_desktop LIBRARY DESTINATION ${private_lib} COMPONENT desktop)
  install(TARGETS orsanta_report RUNTIME DESTINATION ${private_lib} COMPONENT desktop)
  install(TARGETS orsanta_strip RUNTIME DESTINATION ${private_bin} COMPONENT desktop)
  set_target_properties(orsanta_desktop orsanta_report orsanta_strip PROPERTIES INSTALL_RPATH "")
endif()

# --- For hosts ---

install(FILES include/orsanta/orsanta.h ${CMAKE_BINARY_DIR}/include/orsanta/version.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orsanta COMPONENT development)
install(FILES packaging/man/orsanta.h.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Orsanta)
configure_package_config_file(packaging/OrsantaConfig.cmake.in ${CMAKE_BINARY_DIR}/OrsantaConfig.cmake
                              INSTALL_DESTINATION ${package_dir}
                              PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/OrsantaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/OrsantaConfig.cmake ${CMAKE_BINARY_DIR}/OrsantaConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/orsanta.pc.in ${CMAKE_BINARY_DIR}/orsanta.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/orsanta.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
