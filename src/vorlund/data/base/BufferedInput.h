// The filter that reads blocks ahead.
#pragma once

#include <vorlund/StreamFilterImpl.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

namespace vorlund {

class CBufferedInput : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x3B0F6E52, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    void SetBlockSize(std::size_t size);

    void Close() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;
    bool Eof() override;
    const TDataFormat& GetFormat() override;
    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;
    void Disconnect() override;

protected:
    void GiveBack();

private:
    std::size_t Ahead() const { return static_cast<std::size_t>(end_ - next_); }
    void Discard();
    std::uint64_t ReadMore(std::uint8_t* buffer, std::uint64_t size);
    bool Fill();

    /// Null while the stream reads into it.
    std::unique_ptr<std::uint8_t[]> block_;
    std::size_t blockSize_ = 0;
    /// What was read ahead.
    const std::uint8_t* next_ = nullptr;
    const std::uint8_t* end_ = nullptr;
    /// What the stream raised behind bytes that were delivered.
    std::exception_ptr failure_;
};

} // namespace vorlund
