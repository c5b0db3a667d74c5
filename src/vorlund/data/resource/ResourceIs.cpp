#include "vorlund/data/resource/ResourceIs.h"

#include "vorlund/data/base/NoMediaSamples.h"
#include "vorlund/data/base/NoteTaking.h"
#include "vorlund/data/resource/ResourceLock.h"
#include "vorlund/data/resource/ResourceReference.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/ResourceIs");
constexpr const wchar* kRead = VRL_L("vorlund::CResourceIs::Read");
constexpr const wchar* kNoResource = VRL_L("No resource bound");
constexpr TFailure kLengthUnbound{VRL_L("vorlund::CResourceIs::GetLength"), kFile, 76, kNoResource};
constexpr TFailure kSeekUnbound{VRL_L("vorlund::CResourceIs::Seek"), kFile, 88, kNoResource};
constexpr TFailure kTellUnbound{VRL_L("vorlund::CResourceIs::Tell"), kFile, 99, kNoResource};
constexpr TFailure kBufferIsNull{kRead, kFile, 116, VRL_L("buffer is NULL")};
constexpr TFailure kReadUnbound{kRead, kFile, 117, kNoResource};
constexpr TFailure kSampleIsNull{kRead, kFile, 140, VRL_L("sample is NULL")};
constexpr TFailure kNoMediaSamples{kRead, kFile, 141, VRL_L("Media samples are not supported")};
constexpr TFailure kSkipUnbound{VRL_L("vorlund::CResourceIs::Skip"), kFile, 151,
                                VRL_L("Stream is not bound to a resource")};

} // namespace

void CResourceIs::Close() {
    position_ = 0;
    resource_.Reset();
}

std::uint32_t CResourceIs::GetCapabilities() {
    // Bit 8 (write) is part of it, as in the default input stream.
    return resource_ ? 15 : 0;
}

std::int64_t CResourceIs::GetLength() {
    if (!resource_) Raise<COperationNotSupportedException>(kLengthUnbound);
    return static_cast<std::int64_t>(resource_->GetSize());
}

void CResourceIs::Seek(std::int64_t position) {
    if (!resource_) Raise<COperationNotSupportedException>(kSeekUnbound);
    position_ = std::min(static_cast<std::uint64_t>(position), resource_->GetSize());
}

std::int64_t CResourceIs::Tell() {
    if (!resource_) Raise<COperationNotSupportedException>(kTellUnbound);
    return static_cast<std::int64_t>(position_);
}

bool CResourceIs::Eof() {
    return !resource_ || position_ >= resource_->GetSize();
}

const TDataFormat& CResourceIs::GetFormat() {
    return resource_ ? *resource_->GetFormat() : GetEmptyFormat();
}

void CResourceIs::Read(IMediaSample* sample) {
    RefuseMediaSample(sample, kSampleIsNull, kNoMediaSamples);
}

std::uint64_t CResourceIs::Read(void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kBufferIsNull);
    if (!resource_) Raise<CIOException>(kReadUnbound);
    if (position_ >= resource_->GetSize()) return 0;
    const CResourceLock lock(*resource_, LOCK_MODE_READ);
    // Asked for again under the lock: a writer may have changed it.
    const std::uint64_t length = lock.GetSize();
    if (position_ >= length) return 0;
    const std::uint64_t count = std::min(size, length - position_);
    std::memcpy(buffer, lock.GetData() + position_, static_cast<std::size_t>(count));
    position_ += count;
    notes::CountBytesRead(count);
    return count;
}

CLoan CResourceIs::Lend(std::uint64_t size, std::uint64_t) {
    if (!resource_) Raise<CIOException>(kReadUnbound);
    if (position_ >= resource_->GetSize()) return {nullptr, 0};
    IResource* const resource = resource_.Get();
    const auto* const data = static_cast<const std::byte*>(resource->Lock(LOCK_MODE_READ));
    CLoan::TGiveBack const unlock = [](void* locked) { static_cast<IResource*>(locked)->Unlock(); };
    const std::uint64_t length = data ? resource->GetSize() : 0;
    const std::uint64_t count = position_ < length ? std::min(size, length - position_) : 0;
    const std::uint64_t begin = position_;
    position_ += count;
    notes::CountBytesRead(count);
    return {count > 0 ? data + begin : nullptr, count, unlock, resource};
}

void CResourceIs::Skip(std::uint64_t count) {
    if (!resource_) Raise<CIOException>(kSkipUnbound);
    const std::uint64_t length = resource_->GetSize();
    if (position_ < length) position_ += std::min(count, length - position_);
}

void CResourceIs::SetResource(IResource* resource) {
    Rebind(resource_, resource);
}

} // namespace vorlund
