// A file that is read, with its buffer.
#pragma once

#include <vorlund/Platform.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace vorlund {

/// Reads a file through a window: a buffer that holds the bytes before `end_`, whose place in the file is
/// known. The position is therefore always known without asking the system, and setting it inside the window
/// keeps the window: the small steps of a parser cost no system call. Setting it elsewhere drops the window,
/// so that who comes back sees what has been written meanwhile.
///
/// One thread at a time. A closed reader has position and length 0.
class CFileReader {
public:
    CFileReader() = default;
    CFileReader(const CFileReader&) = delete;
    CFileReader& operator=(const CFileReader&) = delete;
    ~CFileReader() { Close(); }

    /// Opens a closed reader and measures the file; false when the system refuses.
    bool Open(const wchar* path);
    void Close();
    bool IsOpen() const { return descriptor_ >= 0; }

    /// The length in bytes when the file was opened.
    std::int64_t GetLength() const { return length_; }
    std::int64_t Tell() const { return endPosition_ - (end_ - next_); }

    /// Goes to `position`, which may lie beyond the end; false, and nothing done, when it is negative.
    bool Seek(std::int64_t position);

    /// Reads `size` bytes, fewer only at the end of the file and when the system refuses; returns how many.
    /// The reader must be open. Raises `std::bad_alloc`.
    std::uint32_t Read(void* destination, std::uint32_t size) {
        if (size == 0 || size > GetAvailable()) return ReadBeyondWindow(destination, size);
        std::memcpy(destination, next_, size);
        next_ += size;
        return size;
    }

    /// What comes next as it is in the window, and moves on behind it: at most `size` bytes, or a multiple of
    /// `grain` when the window ends before; 0 bytes at the end of the file and when the system refuses. Null
    /// when the window has less than `grain`. The bytes stay until the reader is used again. Raises
    /// `std::bad_alloc`.
    const unsigned char* Lend(std::uint64_t size, std::uint64_t grain, std::uint32_t& count);

    /// The system's number of the first error since the file was opened; 0 without one. Kept when the reader
    /// is closed, until it is opened again.
    std::uint32_t GetReadError() const { return readError_; }

private:
    std::uint32_t GetAvailable() const { return static_cast<std::uint32_t>(end_ - next_); }
    std::uint32_t ReadBeyondWindow(void* destination, std::uint32_t size);
    std::uint32_t ReadDirectly(unsigned char* destination, std::uint32_t size);
    std::uint32_t FillWindow();
    std::uint32_t ReadAtEnd(unsigned char* destination, std::uint32_t size);
    void EmptyWindow(std::int64_t position);

    int descriptor_ = -1;
    /// Size of the buffer, which is allocated when it is first filled.
    std::uint32_t capacity_ = 0;
    /// How much the next filling asks for.
    std::uint32_t stride_ = 0;
    std::unique_ptr<unsigned char[]> buffer_;
    /// The next byte to deliver and the end of the window, in the buffer.
    const unsigned char* next_ = nullptr;
    const unsigned char* end_ = nullptr;
    /// Where the window ends in the file.
    std::int64_t endPosition_ = 0;
    std::int64_t length_ = 0;
    std::uint32_t readError_ = 0;
};

} // namespace vorlund
