# The parts of a build that differ between the systems.
if(WIN32)
  set(ORSKA_PLATFORM Windows)
  include(OrskaWindows)
else()
  set(ORSKA_PLATFORM Linux)
endif()

# orska_bodies(target NAME...) adds the bodies for this system: NAME_Linux.cpp or NAME_Windows.cpp.
function(orska_bodies target)
  list(TRANSFORM ARGN APPEND _${ORSKA_PLATFORM}.cpp)
  target_sources(${target} PRIVATE ${ARGN})
endfunction()
