# CPack runs this on the staged files of all components, for what Debian requires beyond an install.

find_program(GZIP_PROGRAM gzip REQUIRED)
find_program(STRIP_PROGRAM strip REQUIRED)

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Sets a variable to the staged files of a pattern; there has to be at least one.
function(find_staged variable pattern)
  file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/*/usr/${pattern})
  if(NOT files)
    message(FATAL_ERROR "There is no ${pattern} below ${CPACK_TEMPORARY_DIRECTORY}")
  endif()
  set(${variable} ${files} PARENT_SCOPE)
endfunction()

find_staged(programs veltrane-dsn*)
list(FILTER programs INCLUDE REGEX "/(bin|libexec/veltrane)/[^/]*$")
find_staged(libraries lib*.so)
find_staged(archives lib*.a)
run(${STRIP_PROGRAM} --remove-section=.comment --remove-section=.note ${programs})
run(${STRIP_PROGRAM} --remove-section=.comment --remove-section=.note --strip-unneeded
    ${libraries})
run(${STRIP_PROGRAM} --remove-section=.comment --strip-debug --enable-deterministic-archives
    ${archives})

find_staged(manuals share/man/*.1)
find_staged(changelogs share/doc/*/changelog)
foreach(changelog ${changelogs})
  # share/doc/PACKAGE/changelog
  cmake_path(GET changelog PARENT_PATH folder)
  cmake_path(GET folder FILENAME package)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${changelog}.Debian COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/lintian-overrides
                 ${folder}/../../lintian/overrides/${package} COPYONLY)
  list(APPEND changelogs ${changelog}.Debian)
endforeach()
run(${GZIP_PROGRAM} -9 --no-name --force ${manuals} ${changelogs})
