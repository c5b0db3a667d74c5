// The filter that collects blocks.
#pragma once

#include <vorlund/StreamFilterImpl.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vorlund {

class CBufferedOutput : public COutputFilterImpl<IOutputStreamFilter> {
public:
    static constexpr CId ClassId{0x3B0F6E53, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    void SetBlockSize(std::size_t size);
    /// Hands what was collected to the stream.
    void WriteOut();

    void Close() override;
    std::int64_t GetLength() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;
    void SetFormat(const TDataFormat* format) override;
    void Write(const void* buffer, std::uint64_t size) override;
    bool Connect(IOutputStream* stream) override;
    void Disconnect() override;

protected:
    void GiveBack();

private:
    class CLoan;

    std::size_t Collected() const { return static_cast<std::size_t>(next_ - block_.get()); }
    void Restart(std::size_t collected);
    void Drop();
    void LetGo();
    void WriteMore(const std::uint8_t* bytes, std::uint64_t size);
    template <class TAct> void WriteOutAnd(TAct act);

    /// Null while the stream takes it.
    std::unique_ptr<std::uint8_t[]> block_;
    std::size_t blockSize_ = 0;
    /// Where the next byte goes; without a stream and without a block there is no room.
    std::uint8_t* next_ = nullptr;
    std::uint8_t* limit_ = nullptr;
};

} // namespace vorlund
