# Hardens code that runs in other programs' processes or handles passwords, with the flags of
# distributions. The support library keeps its user's flags. A sanitizer checks more by other means.
function(orska_hardening target)
  if(ORSKA_SANITIZED)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  get_target_property(type ${target} TYPE)
  if(WIN32)
    # There the functions that failed checks call are in this library, for all that link the code.
    target_link_libraries(${target} PUBLIC ssp)
  elseif(NOT type STREQUAL "STATIC_LIBRARY")
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
  endif()
endfunction()
