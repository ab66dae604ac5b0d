// The operating system's header, without the parts and the macros that get in the way.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// A macro of the system that would rename one of our functions.
#undef WriteProfileString
