# Hardens what runs in other programs' processes or handles passwords, as distributions build it.
# The support library is left to its user's flags. A sanitizer checks more, and in its own way.
function(orska_hardening target)
  if(ORSKA_SANITIZED)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  get_target_property(type ${target} TYPE)
  if(WIN32)
    # Where the checks end when they fail is a library of its own there, for all that link the code.
    target_link_libraries(${target} PUBLIC ssp)
  elseif(NOT type STREQUAL "STATIC_LIBRARY")
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
  endif()
endfunction()
