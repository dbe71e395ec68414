# The warnings that all of our code is compiled with.
add_compile_options(
  -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Wcast-qual -Wformat=2 -Wundef -Woverloaded-virtual
  # gcc 12 reports false overlaps in std::string's own code.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${ORSKA_WARNINGS_AS_ERRORS}>:-Werror>)
# By default clang passes no size to operator delete; the setup library clears memory that it frees.
add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fsized-deallocation>)

# Hardens all code of a folder and those below it, with the flags of distributions: code that runs in
# other programs' processes or handles passwords. The support library keeps its user's flags. A
# sanitizer checks more by other means.
function(orska_harden_folder)
  if(NOT ORSKA_SANITIZED)
    add_compile_options(-fstack-protector-strong
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    if(NOT WIN32)
      add_link_options(-Wl,-z,relro -Wl,-z,now)
    endif()
  endif()
endfunction()
