#include "data/file/TemporaryFolder.h"
#include "data/file/UnreadablePlace.h"
#include "support/ReadHook_win32.h"

#include <stdexcept>

namespace vorlund::test {

// A file whose second half cannot be read.
CUnreadablePlace::CUnreadablePlace() {
    auto* const folder = new CTemporaryFolder;
    state_ = folder;
    const fs::path file = folder->GetPath() / "unreadable";
    WriteFile(file, std::string(2 * kReadable, 'x'));
    path_ = ToVorlund(file);
    if (!LimitReads(kReadable, true)) throw std::runtime_error("the library reads in another way");
}

CUnreadablePlace::~CUnreadablePlace() {
    UnlimitReads();
    delete static_cast<CTemporaryFolder*>(state_);
}

} // namespace vorlund::test
