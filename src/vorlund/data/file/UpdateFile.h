// A file that is read and changed in place.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

/// Nothing is buffered: what was written is with the system, in the order of the calls.
class CUpdateFile {
public:
    /// Raises `CFileAccessException` "Cannot open '...' for writing", or "for reading" when nothing will be
    /// written.
    CUpdateFile(const wchar* path, bool isReadOnly);
    CUpdateFile(const CUpdateFile&) = delete;
    CUpdateFile& operator=(const CUpdateFile&) = delete;
    ~CUpdateFile();

    /// What the file had when it was opened, and what was written behind.
    std::uint64_t GetLength() const { return length_; }
    /// Reads what there is of `size` bytes. Raises `CIOException` "Cannot read the file".
    std::uint64_t Read(std::uint64_t position, void* buffer, std::uint64_t size);
    /// Writes all of them. Raises `CIOException` "Cannot write the file".
    void Write(std::uint64_t position, const void* buffer, std::uint64_t size);
    /// Closes the file. Raises as `Write`.
    void Close();

private:
    int descriptor_ = -1;
    std::uint64_t length_ = 0;
};

} // namespace vorlund
