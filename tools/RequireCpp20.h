/// Stops with one clear error if a program that includes a header is compiled for an older C++.
#ifndef TOOLS_REQUIRECPP20_H
#define TOOLS_REQUIRECPP20_H

#if __cplusplus < 202002L
#error "The headers of Orska need C++20: compile with -std=c++20 or later."
#endif

#endif
