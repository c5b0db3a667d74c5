#include "vorlund/devices/audio/CaptureStream.h"

#include <vorlund/Exception.h>

#include <cerrno>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/CaptureStream");
constexpr TFailure kNoLength{VRL_L("vorlund::CCaptureStream::GetLength"), kFile, 1,
                             VRL_L("A recording has no length")};
constexpr TFailure kNoPositions{VRL_L("vorlund::CCaptureStream::Seek"), kFile, 2,
                                VRL_L("A recording has no positions")};

} // namespace

void CCaptureStream::SetSession(const std::shared_ptr<CInputSession>& session) {
    session_ = session;
}

std::int64_t CCaptureStream::GetLength() {
    Raise<COperationNotSupportedException>(kNoLength);
}

void CCaptureStream::Seek(std::int64_t) {
    Raise<COperationNotSupportedException>(kNoPositions);
}

std::uint64_t CCaptureStream::Read(void* buffer, std::uint64_t size) {
    if (!buffer) return CInputStreamImpl::Read(buffer, size);
    const std::uint64_t count = session_->Read(buffer, size);
    position_ += static_cast<std::int64_t>(count);
    return count;
}

std::uint32_t CCaptureStream::GetReadError() const {
    return session_->HasLost() && session_->IsAtEnd() ? ENODEV : 0;
}

} // namespace vorlund
