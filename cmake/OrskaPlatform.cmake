# Which of the several bodies of a header a build takes: _Windows.cpp or _Linux.cpp.
if(WIN32)
  set(ORSKA_PLATFORM Windows)
  include(OrskaWindows)
else()
  set(ORSKA_PLATFORM Linux)
endif()
