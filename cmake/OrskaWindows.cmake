# Settings of a build for Windows on Debian: libraries that scripts build, and Wine, in which its
# programs run.

# Sets a variable to the folder of such a library; the script prints it with --prefix.
function(find_built variable script)
  set(script ${PROJECT_SOURCE_DIR}/packaging/windows/${script})
  execute_process(COMMAND ${script} --prefix OUTPUT_VARIABLE prefix
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS ${prefix}/complete)
    message(FATAL_ERROR "There is nothing complete in ${prefix}: run scripts/deps windows, then ${script}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
  set(CMAKE_FIND_ROOT_PATH ${CMAKE_FIND_ROOT_PATH} ${prefix} PARENT_SCOPE)
  set(${variable} ${prefix} PARENT_SCOPE)
endfunction()
find_built(icu_prefix icu/build-icu)
if(ORSKA_BUILD_BENCHMARKS)
  find_built(benchmark_prefix benchmark/build-benchmark)
endif()

add_compile_definitions(
  U_STATIC_IMPLEMENTATION UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN STRICT
  WINVER=0x0A00 _WIN32_WINNT=0x0A00
  # C99's printf formats, as on Linux.
  __USE_MINGW_ANSI_STDIO=1)
add_compile_options(-ffunction-sections -fdata-sections)
# The same sources make the same bytes: no link time, no folder of this machine. The last map that
# matches a path wins, and the build may be inside the sources.
add_link_options(-Wl,--gc-sections -Wl,--no-insert-timestamp)
add_compile_options(
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
  -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build
  -ffile-prefix-map=${icu_prefix}=./icu)
# Functions and lines, for the symbols beside the package.
add_compile_options(-g1)
enable_language(RC)
# Failed checks of hardened code call functions of this library.
string(PREPEND CMAKE_CXX_STANDARD_LIBRARIES "-lssp ")

if(ORSKA_BUILD_TESTS)
  # Debian has GoogleTest for Windows only as source.
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()

# Adds a version resource to a shipped library or program, and moves the symbols into a separate
# file, to which it links. objcopy would write the build time into both.
function(orska_windows_product target description)
  set(VELTRANE_FILE_DESCRIPTION "${description}")
  set(VELTRANE_FILE_TYPE VFT_DLL)
  set(VELTRANE_FILE_NAME ${target}.dll)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(VELTRANE_FILE_TYPE VFT_APP)
    set(VELTRANE_FILE_NAME ${target}.exe)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/VeltraneVersion.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})

  set(program $<TARGET_FILE:${target}>)
  set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${objcopy} --only-keep-debug ${program} ${program}.debug
    COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${program}.debug ${program}
    VERBATIM)
  install(FILES ${program}.debug DESTINATION . COMPONENT symbols EXCLUDE_FROM_ALL)
endfunction()

# Programs run in Wine, in a folder of the build that the test `wine_prefix` makes.
set(ORSKA_WINE_PREFIX ${PROJECT_BINARY_DIR}/wine)
set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/cmake/run-in-wine ${ORSKA_WINE_PREFIX})
