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

#undef CopyFile
#undef CreateDirectory
#undef CreateEvent
#undef CreateFile
#undef CreateMutex
#undef CreateWindow
#undef DeleteFile
#undef FindResource
#undef GetClassInfo
#undef GetClassName
#undef GetCurrentDirectory
#undef GetFileAttributes
#undef GetMessage
#undef GetModuleFileName
#undef GetObject
#undef LoadLibrary
#undef LoadResource
#undef MessageBox
#undef MoveFile
#undef OutputDebugString
#undef RemoveDirectory
#undef SendMessage
#undef SetFileAttributes
#undef Yield
