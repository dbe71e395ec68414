# Hardens what runs in other programs' processes or handles passwords, as distributions build it.
# The support library is left to its user's flags. A sanitizer checks more, and in its own way.
function(orska_hardening target)
  if(WIN32 OR ORSKA_SANITIZED)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL "STATIC_LIBRARY")
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
  endif()
endfunction()
