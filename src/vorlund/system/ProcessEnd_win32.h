// How the library's entry point (LibraryEntry_win32.cpp) tells that the process ends.
#pragma once

namespace vorlund::waiting {

/// When the library is loaded: from now on `IsThreadLast` asks the system too, because static objects of
/// other libraries are destroyed before the library is told.
void FindProcessEnd() noexcept;

/// From now on `IsThreadLast` is true: the system has ended all other threads.
void NoteThreadIsLast() noexcept;

} // namespace vorlund::waiting
