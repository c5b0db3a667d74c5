// The data change hands as whole blocks: what is loaded or filtered is collected in a block of its own, which
// takes the place of the former one under the write lock. So an exception anywhere leaves nothing half done,
// and the size is 0 as long as a block is being filled.
#include "vorlund/data/resource/Resource.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/data/base/FilterConnection.h"
#include "vorlund/data/resource/ResourceLock.h"

#include <vorlund/StreamErrors.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/StreamSelector.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/Resource");
constexpr const wchar* kApplyFilter = VRL_L("vorlund::CResource::ApplyFilter");
constexpr const wchar* kSetFormat = VRL_L("vorlund::CResource::SetFormat");
constexpr const wchar* kFormatIsLocked = VRL_L("Data format is locked");
constexpr TFailure kFilterIsNull{kApplyFilter, kFile, 76, VRL_L("filter is NULL")};
constexpr TFailure kNoInputStream{kApplyFilter, kFile, 81, VRL_L("Cannot create resource input stream")};
constexpr TFailure kFilterOutOfMemory{kApplyFilter, kFile, 97, VRL_L("malloc failed")};
constexpr TFailure kFilterFormatLocked{kApplyFilter, kFile, 108, kFormatIsLocked};
constexpr TFailure kDecodedFormatLocked{VRL_L("vorlund::CResource::LoadDecoded"), kFile, 163,
                                        kFormatIsLocked};
constexpr TFailure kNothingToSaveTo{VRL_L("vorlund::CResource::Save"), kFile, 289,
                                    VRL_L("Stream pointer is NULL")};
constexpr TFailure kFormatIsNull{kSetFormat, kFile, 321, VRL_L("format is NULL")};
constexpr TFailure kFormatLocked{kSetFormat, kFile, 325, kFormatIsLocked};

/// What a filter is given room for beyond the bytes that go in, so that the end is seen without growing.
constexpr std::uint64_t kSpare = 4096;

/// Reads once into the free part of a block; the number of bytes added, 0 at the end. A stream may claim more
/// than it was asked for.
std::uint64_t ReadOnce(IInputStream& stream, const CByteBlock& block, std::uint64_t filled,
                       std::uint64_t end) {
    const std::uint64_t space = end - filled;
    return std::min(stream.Read(block.Get() + filled, space), space);
}

} // namespace

void CResource::ApplyFilter(IInputStreamFilter* filter) {
    if (!filter) Raise<CNullPtrException>(kFilterIsNull);
    const auto input = CreateOrRaise<IResourceIs>(classid::CResourceIs, kNoInputStream);
    input->SetResource(this);
    CFilterConnection connection(*filter, input.Get());

    CByteBlock filtered;
    if (!filtered.Allocate(GetFilterRoom())) Raise<COutOfMemoryException>(kFilterOutOfMemory);
    std::uint64_t filled = 0;
    while (const std::uint64_t count = ReadOnce(*filter, filtered, filled, filtered.GetCapacity())) {
        filled += count;
        if (filled < filtered.GetCapacity()) continue;
        CByteBlock former;
        if (!filtered.Grow(filled, filled + kSpare, former)) Raise<COutOfMemoryException>(kFilterOutOfMemory);
    }
    filtered.Trim(filled);
    CFormatRecord format(filter->GetFormat());
    connection.Disconnect();

    if (IsRefused(format.Get())) Raise<CDataFormatException>(kFilterFormatLocked);
    const CResourceLock lock(*this, LOCK_MODE_WRITE);
    data_ = std::move(filtered);
    size_ = filled;
    format_ = std::move(format);
}

void CResource::LoadDecoded(const CInputStreamSelector& source) {
    if (source.GetInputStreamTmp()->GetFormat().id == format_.Get().id) {
        Load(source);
        return;
    }
    const auto decoded = CRefPtr<IInputStream>::Adopt(source.DecodeStream(format_.Get().id));
    CFormatRecord format(decoded->GetFormat());
    // Without a format of its own the resource takes what the decoders give.
    if (IsRefused(format.Get())) Raise<CDataFormatException>(kDecodedFormatLocked);
    const CResourceLock lock(*this, LOCK_MODE_WRITE);
    Fill(*decoded);
    format_ = std::move(format);
}

void CResource::Load(const CInputStreamSelector& source) {
    IInputStream* const stream = source.GetInputStreamTmp();
    const CResourceLock lock(*this, LOCK_MODE_WRITE);
    Fill(*stream);
}

void CResource::Fill(IInputStream& stream) {
    SetSize(0);
    try {
        const auto length = static_cast<std::uint64_t>(stream.GetLength());
        CByteBlock block;
        if (length == 0 || !block.Allocate(length)) return;
        for (std::uint64_t filled = 0; filled < length;) {
            const std::uint64_t count = ReadOnce(stream, block, filled, length);
            if (count == 0) return;
            filled += count;
        }
        data_ = std::move(block);
        size_ = length;
    } catch (const COperationNotSupportedException&) {
        // Kept for callers: a stream that does not know its length leaves the resource empty, silently.
    }
}

void* CResource::Lock(TLockMode mode) {
    lock_.Lock(mode, 0);
    return data_.Get();
}

void CResource::Save(const COutputStreamSelector& target, bool raw) {
    const auto stream = CRefPtr<IOutputStream>::Adopt(raw ? target.GetOutputStream()
                                                          : target.EncodeStream(&format_.Get(), nullptr));
    if (!stream) Raise<CNullPtrException>(kNothingToSaveTo);
    {
        const CResourceLock lock(*this, LOCK_MODE_READ);
        stream->Write(lock.GetData(), lock.GetSize());
    }
    CloseOutput(*stream);
}

void CResource::SetFormat(const TDataFormat* format) {
    if (!format) Raise<CNullPtrException>(kFormatIsNull);
    if (IsRefused(*format)) Raise<CDataFormatException>(kFormatLocked);
    format_.Set(*format);
}

void CResource::SetSize(std::uint64_t size) {
    size_ = 0;
    data_.Allocate(0);
    // Kept for callers: without the memory the resource has that size, and no data.
    size_ = size;
    data_.Allocate(size);
}

void CResource::Unlock() {
    const int mode = lock_.GetLockMode();
    // Kept for callers: other values lock for writing too, but are not counted.
    if (mode == LOCK_MODE_WRITE || mode == 2) ++modificationCount_;
    lock_.Unlock();
}

bool CResource::WriteAt(std::uint64_t position, const void* buffer, std::uint64_t size) {
    if (size > CByteBlock::kMaxSize || position > CByteBlock::kMaxSize - size) return false;
    const std::uint64_t used = data_.Get() ? size_.load() : 0;
    const std::uint64_t end = position + size;
    CByteBlock former;
    if (!data_.Grow(used, end, former)) return false;
    if (position > used) std::memset(data_.Get() + used, 0, static_cast<std::size_t>(position - used));
    std::memmove(data_.Get() + position, buffer, static_cast<std::size_t>(size));
    size_ = std::max(used, end);
    return true;
}

std::uint64_t CResource::GetFilterRoom() {
    const CResourceLock lock(*this, LOCK_MODE_READ);
    return std::min(lock.GetSize() + kSpare, CByteBlock::kMaxSize);
}

bool CResource::IsRefused(const TDataFormat& format) const {
    return isFormatLocked_ && format.id != format_.Get().id;
}

} // namespace vorlund
