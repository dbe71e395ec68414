# Sets the warnings that all of our code is compiled with.
function(orska_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
    -Wcast-qual -Wformat=2 -Wundef -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc 12 reports false overlaps in std::string's own code.
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(ORSKA_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
