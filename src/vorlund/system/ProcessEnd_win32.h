// How the library's entry point (LibraryEntry_win32.cpp) tells that the process ends.
#pragma once

namespace vorlund::waiting {

/// From now on `IsThreadLast` is true: the system has ended all other threads.
void NoteThreadIsLast() noexcept;

} // namespace vorlund::waiting
