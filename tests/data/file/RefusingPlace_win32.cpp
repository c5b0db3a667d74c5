#include "data/file/RefusingPlace.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace vorlund::test {

// A pipe whose reader goes away.
CRefusingPlace::CRefusingPlace()
    : path_(L"\\\\.\\pipe\\vorlund-test-" + std::to_wstring(GetCurrentProcessId())) {
    HANDLE const pipe = CreateNamedPipeW(path_.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE | PIPE_NOWAIT, 1,
                                         64, 64, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) reader_ = pipe;
}

void CRefusingPlace::Refuse() {
    if (reader_) CloseHandle(reader_);
    reader_ = nullptr;
}

} // namespace vorlund::test
