# Debian packages (cpack -G DEB in the build directory), one per install component:
#   libtarnelad4          the core library                 (Runtime)
#   libtarnelad-dev       its headers, CMake package, .pc  (Development)
#   libtarnelad-gtk4      the GTK backend library          (GtkRuntime)
#   libtarnelad-gtk-dev   its header, CMake targets, .pc   (GtkDevelopment)
# Libraries are stripped; run-time dependencies come from dpkg-shlibdeps.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnelad)
set(CPACK_PACKAGE_VENDOR TarnelAd)
set(CPACK_PACKAGE_CONTACT "TarnelAd maintainers <sdk@tarnelad.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "In-app advertising library for Linux")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The GTK backend's own dependency on the core library is the component dependency below;
# dpkg-shlibdeps finds the core in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtarnelad${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtarnelad-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "nlohmann-json3-dev (>= 3.10)")
set(CPACK_COMPONENTS_ALL Runtime Development)

if(TARGET TarnelAdGtk)
  set(CPACK_DEBIAN_GTKRUNTIME_PACKAGE_NAME libtarnelad-gtk${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_GTKRUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_GTKDEVELOPMENT_PACKAGE_NAME libtarnelad-gtk-dev)
  set(CPACK_DEBIAN_GTKDEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_GTKDEVELOPMENT_PACKAGE_DEPENDS "libgtk-3-dev")
  list(APPEND CPACK_COMPONENTS_ALL GtkRuntime GtkDevelopment)
endif()

include(CPack)

cpack_add_component(Runtime DISPLAY_NAME "TarnelAd library")
cpack_add_component(Development DISPLAY_NAME "TarnelAd development files" DEPENDS Runtime)
if(TARGET TarnelAdGtk)
  cpack_add_component(GtkRuntime DISPLAY_NAME "TarnelAd GTK backend" DEPENDS Runtime)
  cpack_add_component(GtkDevelopment DISPLAY_NAME "TarnelAd GTK backend development files"
                      DEPENDS GtkRuntime Development)
endif()
