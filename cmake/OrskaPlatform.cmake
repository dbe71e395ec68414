# Selects the body that a build compiles for a header: _Windows.cpp or _Linux.cpp.
if(WIN32)
  set(ORSKA_PLATFORM Windows)
  include(OrskaWindows)
else()
  set(ORSKA_PLATFORM Linux)
endif()
