# The install directories: GNUInstallDirs and this project's own.

# Debian has libraries in lib/<architecture>, which CMake uses for the prefix /usr only. This uses
# it for every prefix, so that a build tree installs and packs the same files for each prefix.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND NOT CMAKE_CROSSCOMPILING
   AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Object code libraries")
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

# orska_install(component directory file...)
function(orska_install component directory)
  install(FILES ${ARGN} COMPONENT ${component} DESTINATION ${directory})
endfunction()

# A library that only driver managers load, or that such a library loads.
function(orska_install_driver_library target)
  install(TARGETS ${target}
          LIBRARY DESTINATION ${VELTRANE_SETUP_INSTALL_DIR} COMPONENT runtime
          RUNTIME DESTINATION ${VELTRANE_SETUP_INSTALL_DIR} COMPONENT runtime
          ARCHIVE EXCLUDE_FROM_ALL DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT import)
endfunction()

# Headers of a folder that a program may include, as <orska/FOLDER/FILE>. They include each other by
# relative paths, so that no other folder of the same name is found.
function(orska_public_headers)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
             OUTPUT_VARIABLE folder)
  list(TRANSFORM ARGN PREPEND ${folder}/)
  set_property(GLOBAL APPEND PROPERTY ORSKA_PUBLIC_HEADERS ${ARGN})
endfunction()
