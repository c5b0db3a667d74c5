// Writing a file.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/StreamImpl.h>

#include <cstdio>
#include <memory>

namespace vorlund {

/// Writes through the C runtime's own buffer, so that what was written also reaches the file when a program
/// ends without releasing the stream.
class CFileOutputStream : public COutputStreamImpl<IFileOutputStream> {
public:
    static constexpr CId ClassId = classid::CFileOutputStream;

    void Close() override;
    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;

    void Write(const void* buffer, std::uint64_t size) override;

    void Open(const wchar* path, bool append) override;

    /// Whether writes go where the position is: not in a pipe, and not in a file that is opened to append.
    bool WritesAtPosition() const;
    /// The system's number of the first error in writing since the last `Open`, the closing included; 0
    /// without one.
    std::uint32_t GetWriteError() const { return writeError_; }
    /// Raises as `Write` when there was such an error.
    void RaiseWriteError() const;

protected:
    ~CFileOutputStream() { CloseFile(); }

private:
    void CloseFile();
    /// Remembers that the system has refused bytes, unless `isGood`, which is returned.
    bool NoteWrite(bool isGood);
    /// The same when a seek could not write out what it had to; `isGood` tells of the seek.
    bool NoteSeek(bool isGood);

    /// The buffer of the file, which outlives it.
    std::unique_ptr<char[]> block_;
    std::FILE* file_ = nullptr;
    /// The path given to `Open`; empty when closed.
    CString name_;
    bool append_ = false;
    /// True while the last operation was a write, so that the position is where writes go.
    bool writing_ = false;
    std::uint32_t writeError_ = 0;
};

/// False when `stream` leads to a file stream of the library that does not write where its position is.
bool WritesAtPosition(IOutputStream& stream);

} // namespace vorlund
