// The one way in for <windows.h>: without the parts that nobody here needs, with wide-character functions,
// and without the macros that would silently rename our own operations. Code that means such a system
// function calls it by its full name (`CreateFileW`). Only files of the Windows side of a platform pair
// include this.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef UNICODE
#define UNICODE
#endif

#include <windows.h>

// Without its counterpart NamesEnd.h: the names are ours to the end of the file that includes this.
#include <vorlund/NamesBegin.h>
