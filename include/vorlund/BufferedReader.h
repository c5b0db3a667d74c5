/// \file
/// `CBufferedReader`, the base of readers that look ahead.
#pragma once

#include <vorlund/Reader.h>

#include <cstdint>

namespace vorlund {

/// A reader with a buffer of bytes that were read from the stream but not yet consumed. They are at the start
/// of the buffer; positions count them as not yet read.
class VRL_API CBufferedReader : public CReader {
public:
    ~CBufferedReader() noexcept(false) override;

    /// False while any byte is buffered; otherwise the stream's answer.
    bool Eof() override;
    /// `Flush`, then the stream's `Seek`.
    void Seek(std::uint64_t position) override;
    /// The position of the first byte that is not consumed.
    std::uint64_t Tell() override;

protected:
    /// \param stream  read from, with a reference of its own; not null
    /// \param size    bytes of the buffer, which is allocated on the C heap
    ///
    /// Raises `std::bad_alloc`.
    CBufferedReader(IInputStream* stream, int size);

    /// Reads once from the stream, at most what the buffer has room for, behind the buffered bytes. A stream
    /// that delivers less leaves the buffer partly filled; an empty buffer that stays empty means the end of
    /// the data.
    virtual void FillBuffer();
    /// Consumes `count` bytes from the front, or all when there are no more than that; the remaining ones
    /// move to the start of the buffer. A count below 1 consumes nothing.
    virtual void RemoveBufferedData(int count);

public:
    /// Discards the buffered bytes; the stream stays where it is.
    virtual void Flush();

protected:
    std::uint8_t* buffer_;
    std::int32_t capacity_;
    /// Bytes at the start of the buffer that are not consumed.
    std::int32_t buffered_ = 0;
};

} // namespace vorlund
