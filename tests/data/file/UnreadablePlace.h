/// \file
/// Something that is open for reading and then cannot be read.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>

namespace vorlund::test {

/// While it lives, a stream opened on the path delivers `kReadable` bytes 'x' from the start on, and then the
/// system refuses.
class CUnreadablePlace {
public:
    static constexpr std::size_t kReadable = 4096;

    CUnreadablePlace();
    CUnreadablePlace(const CUnreadablePlace&) = delete;
    CUnreadablePlace& operator=(const CUnreadablePlace&) = delete;
    ~CUnreadablePlace();

    const wstring& GetPath() const { return path_; }
    std::int64_t GetStart() const { return start_; }

private:
    wstring path_;
    std::int64_t start_ = 0;
    void* state_ = nullptr;
};

} // namespace vorlund::test
