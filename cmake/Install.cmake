# cmake --install: the public headers under include/TarnelAd/, the versioned shared libraries, a
# CMake package (find_package(TarnelAd 4): TarnelAd::TarnelAd, and TarnelAd::Gtk when the GTK
# backend is installed) and pkg-config files (tarnelad, tarnelad-gtk). Components: Runtime and
# Development for the core, GtkRuntime and GtkDevelopment for the GTK backend; the Debian
# packages are made from them (cmake/Packaging.cmake).
include(CMakePackageConfigHelpers)

set(TNL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelAd)
set(TNL_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# The pkg-config files find the prefix from where they lie, so one file serves every prefix
# (cmake --install --prefix, the packages' /usr).
file(RELATIVE_PATH TNL_PKGCONFIG_TO_PREFIX /${TNL_PKGCONFIG_DIR} /)

install(DIRECTORY include/TarnelAd DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT Development PATTERN Gtk EXCLUDE)
install(TARGETS TarnelAd EXPORT TarnelAdTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT Runtime NAMELINK_COMPONENT Development)
install(EXPORT TarnelAdTargets NAMESPACE TarnelAd:: DESTINATION ${TNL_CMAKE_DIR}
        COMPONENT Development)

configure_package_config_file(cmake/TarnelAdConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TarnelAdConfig.cmake INSTALL_DESTINATION ${TNL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarnelAdConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarnelAdConfig.cmake
              ${PROJECT_BINARY_DIR}/TarnelAdConfigVersion.cmake
        DESTINATION ${TNL_CMAKE_DIR} COMPONENT Development)

configure_file(cmake/tarnelad.pc.in ${PROJECT_BINARY_DIR}/tarnelad.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarnelad.pc DESTINATION ${TNL_PKGCONFIG_DIR}
        COMPONENT Development)

if(TARGET TarnelAdGtk)
  install(DIRECTORY include/TarnelAd/Gtk DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TarnelAd
          COMPONENT GtkDevelopment)
  install(TARGETS TarnelAdGtk EXPORT TarnelAdGtkTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT GtkRuntime NAMELINK_COMPONENT GtkDevelopment)
  install(EXPORT TarnelAdGtkTargets NAMESPACE TarnelAd:: DESTINATION ${TNL_CMAKE_DIR}
          COMPONENT GtkDevelopment)
  configure_file(cmake/tarnelad-gtk.pc.in ${PROJECT_BINARY_DIR}/tarnelad-gtk.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tarnelad-gtk.pc DESTINATION ${TNL_PKGCONFIG_DIR}
          COMPONENT GtkDevelopment)
endif()
