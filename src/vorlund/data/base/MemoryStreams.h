// The streams over bytes in memory.
#pragma once

#include "vorlund/data/base/Lending.h"

#include <vorlund/MemoryStream.h>
#include <vorlund/StreamImpl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vorlund {

class CMemoryOutput : public COutputStreamImpl<IMemoryOutputStream> {
public:
    static constexpr CId ClassId{0x3B0F6E56, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    std::int64_t GetLength() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;
    void Write(const void* buffer, std::uint64_t size) override;
    const void* GetData() override { return bytes_.get(); }
    void SetSize(std::uint64_t size) override;

private:
    struct TFree {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    using TBytes = std::unique_ptr<std::uint8_t[], TFree>;

    std::size_t Used() const { return static_cast<std::size_t>(next_ - bytes_.get()); }
    void NoteSize();
    void MoveTo(std::uint64_t position);
    void WriteMore(const void* buffer, std::uint64_t size);
    TBytes Grow(std::size_t needed);
    void Extend(std::size_t size);

    TBytes bytes_;
    std::size_t capacity_ = 0;
    /// Without what was written since, up to `next_`.
    std::size_t size_ = 0;
    /// Where the next byte goes, and the end of the room. At a position behind the end both are the end.
    std::uint8_t* next_ = nullptr;
    std::uint8_t* limit_ = nullptr;
    /// How far the position is behind that end.
    std::uint64_t gap_ = 0;
};

class CMemoryInput : public CInputStreamImpl<IMemoryInputStream>, public ILendingInput {
public:
    static constexpr CId ClassId{0x3B0F6E57, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override { return static_cast<std::int64_t>(size_); }
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;
    bool Eof() override { return next_ == end_; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override;
    void SetData(const void* data, std::uint64_t size) override;

private:
    std::uint64_t size_ = 0;
    const std::uint8_t* next_ = nullptr;
    const std::uint8_t* end_ = nullptr;
    /// How far the position is behind the end.
    std::uint64_t gap_ = 0;
};

} // namespace vorlund
