# Settings of a build for Windows on Debian: ICU, which `scripts/deps windows` builds, and Wine, in
# which its programs run.
set(build_icu ${PROJECT_SOURCE_DIR}/packaging/windows/icu/build-icu)
execute_process(COMMAND ${build_icu} --prefix OUTPUT_VARIABLE ORSKA_ICU_PREFIX
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${ORSKA_ICU_PREFIX}/complete)
  message(FATAL_ERROR "There is no ICU for Windows in ${ORSKA_ICU_PREFIX}: run scripts/deps windows")
endif()
list(APPEND CMAKE_FIND_ROOT_PATH ${ORSKA_ICU_PREFIX})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${build_icu})

if(ORSKA_BUILD_BENCHMARKS)
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/packaging/windows/benchmark/build-benchmark --prefix
                  OUTPUT_VARIABLE benchmark_prefix OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS ${benchmark_prefix}/complete)
    message(FATAL_ERROR "There is no Google Benchmark for Windows in ${benchmark_prefix}: "
                        "run packaging/windows/benchmark/build-benchmark")
  endif()
  list(APPEND CMAKE_FIND_ROOT_PATH ${benchmark_prefix})
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
  -ffile-prefix-map=${ORSKA_ICU_PREFIX}=./icu)
# Functions and lines, for the symbols beside the package.
add_compile_options(-g1)
enable_language(RC)
include(OrskaVersionResource)

# Moves the symbols of a shipped library or program into a separate file, to which it links. objcopy
# would write the build time into both.
function(orska_symbols_apart target)
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

# Called once, after tests are enabled.
function(orska_add_wine_tests)
  add_test(NAME wine_prefix COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} --create)
  set_tests_properties(wine_prefix PROPERTIES FIXTURES_SETUP wine)
  add_test(NAME wine_stop COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} --stop)
  set_tests_properties(wine_stop PROPERTIES FIXTURES_CLEANUP wine)
endfunction()
