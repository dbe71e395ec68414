# The install directories: GNUInstallDirs and this project's own.

# Debian has libraries in lib/<architecture>, which CMake uses for the prefix /usr only. This uses
# it for every prefix, so that a build tree installs and packs the same files for each prefix.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND NOT CMAKE_CROSSCOMPILING
   AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH
      "Object code libraries")
endif()
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
include(GNUInstallDirs)
foreach(directory BINDIR LIBDIR LIBEXECDIR INCLUDEDIR DATAROOTDIR)
  # Files find each other by relative paths, so that an installation can be moved.
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${directory}})
    message(FATAL_ERROR "CMAKE_INSTALL_${directory} has to be relative to the prefix")
  endif()
endforeach()

# The place of libraries that only driver managers load.
if(WIN32)
  # Everything is in one folder, where the libraries find each other.
  set(CMAKE_INSTALL_BINDIR .)
  set(VELTRANE_SETUP_INSTALL_DIR .)
else()
  set(VELTRANE_SETUP_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/odbc)
endif()
set(VELTRANE_EDITOR_INSTALL_DIR ${CMAKE_INSTALL_LIBEXECDIR}/veltrane)
set(ORSKA_INCLUDE_INSTALL_DIR ${CMAKE_INSTALL_INCLUDEDIR}/orska)
