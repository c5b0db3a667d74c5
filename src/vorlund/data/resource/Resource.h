// Bytes in memory with their format.
#pragma once

#include "vorlund/data/base/FormatRecord.h"
#include "vorlund/data/resource/ByteBlock.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Resource.h>

#include <atomic>

namespace vorlund {

class CResource : public CObjectImpl<IResource> {
public:
    static constexpr CId ClassId = classid::CResource;

    void ApplyFilter(IInputStreamFilter* filter) override;
    std::uint32_t GetModificationCount() override { return modificationCount_; }
    const TDataFormat* GetFormat() override { return &format_.Get(); }
    std::uint64_t GetSize() override { return size_; }
    void LoadDecoded(const CInputStreamSelector& source) override;
    void Load(const CInputStreamSelector& source) override;
    void* Lock(TLockMode mode) override;
    void LockFormat() override { isFormatLocked_ = true; }
    void Save(const COutputStreamSelector& target, bool raw) override;
    void SetFormat(const TDataFormat* format) override;
    void SetSize(std::uint64_t size) override;
    void Unlock() override;

    /// Stores `size` bytes, at least one, from `position` on; a gap before them is filled with zeros. The
    /// caller holds the write lock. `buffer` may point into the data. False when there is no memory; nothing
    /// is then changed.
    bool WriteAt(std::uint64_t position, const void* buffer, std::uint64_t size);

private:
    /// Replaces the data by all that `stream` has. The caller holds the write lock.
    void Fill(IInputStream& stream);
    /// The size of the first block for what a filter makes of the data.
    std::uint64_t GetFilterRoom();
    /// Whether the format is locked and `format` is another one.
    bool IsRefused(const TDataFormat& format) const;

    CByteBlock data_;
    CFormatRecord format_;
    // These two are asked for without the lock.
    std::atomic<std::uint64_t> size_ = 0;
    std::atomic<std::uint32_t> modificationCount_ = 0;
    CReadWriteLock lock_;
    bool isFormatLocked_ = false;
};

} // namespace vorlund
