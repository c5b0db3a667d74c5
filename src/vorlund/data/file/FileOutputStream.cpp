#include "vorlund/data/file/FileOutputStream.h"

#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/file/FileSystem.h"
#include "vorlund/data/file/OpenFailure.h"

#include <vorlund/Exception.h>

#include <limits>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/FileOutputStream_win32");
constexpr const wchar* kSeek = VRL_L("vorlund::CFileOutputStream::Seek");
constexpr const wchar* kFlush = VRL_L("vorlund::CFileOutputStream::Flush");
constexpr const wchar* kWrite = VRL_L("vorlund::CFileOutputStream::Write");
constexpr const wchar* kNotOpen = VRL_L("File is not open");
constexpr const wchar* kWriteFailedReason = VRL_L("fwrite failed");

constexpr TFailure kCannotOpen{VRL_L("vorlund::CFileOutputStream::Open"), kFile, 58,
                               VRL_L("Cannot open '%s' for writing")};
constexpr TFailure kLengthNotOpen{VRL_L("vorlund::CFileOutputStream::GetLength"), kFile, 87, kNotOpen};
constexpr TFailure kFlushNotOpen{kFlush, kFile, 98, kNotOpen};
constexpr TFailure kFlushFailed{kFlush, kFile, 100, kWriteFailedReason};
constexpr TFailure kSeekNotOpen{kSeek, kFile, 106, kNotOpen};
constexpr TFailure kSeekFailed{kSeek, kFile, 109, VRL_L("_fseeki64 failed")};
constexpr TFailure kTellNotOpen{VRL_L("vorlund::CFileOutputStream::Tell"), kFile, 115, kNotOpen};
constexpr TFailure kWriteNotOpen{kWrite, kFile, 128, kNotOpen};
constexpr TFailure kWriteFailed{kWrite, kFile, 131, kWriteFailedReason};

/// The runtime's own blocks have 4 KiB or less, so many small writes would cost many calls of the system.
constexpr std::size_t kBlockSize = std::size_t{32} * 1024;

} // namespace

void CFileOutputStream::Close() {
    CloseFile();
    if (*name_.GetBuffer()) name_ = CString();
}

std::uint32_t CFileOutputStream::GetCapabilities() {
    return file_ ? STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_WRITE : 0;
}

std::int64_t CFileOutputStream::GetLength() {
    if (!file_) Raise<COperationNotSupportedException>(kLengthNotOpen);
    const std::int64_t position = Tell();
    if (!NoteSeek(filesystem::SeekToEnd(file_))) Raise<CIOException>(kSeekFailed);
    const std::int64_t length = Tell();
    Seek(position);
    return length;
}

void CFileOutputStream::Flush() {
    if (!file_) Raise<COperationNotSupportedException>(kFlushNotOpen);
    if (!NoteWrite(filesystem::Flush(file_))) Raise<CIOException>(kFlushFailed);
}

void CFileOutputStream::Seek(std::int64_t position) {
    if (!file_) Raise<COperationNotSupportedException>(kSeekNotOpen);
    writing_ = false;
    if (!NoteSeek(filesystem::SeekFromStart(file_, position))) Raise<CIOException>(kSeekFailed);
}

std::int64_t CFileOutputStream::Tell() {
    if (!file_) Raise<COperationNotSupportedException>(kTellNotOpen);
    return filesystem::Tell(file_);
}

void CFileOutputStream::Write(const void* buffer, std::uint64_t size) {
    if (!file_) Raise<CIOException>(kWriteNotOpen);
    if (size == 0) return;
    // Null holds no bytes, and no memory holds more than a size_t can count: both are short writes.
    if (!buffer || size > std::numeric_limits<std::size_t>::max()) Raise<CIOException>(kWriteFailed);
    // Appended bytes go to the end wherever the position is. Moving it there first keeps `Tell` right while
    // they are still in the buffer. Where that fails there are no positions (a pipe), and nothing is lost.
    if (append_ && !writing_) NoteSeek(filesystem::SeekToEnd(file_));
    writing_ = true;
    if (!NoteWrite(filesystem::Write(file_, buffer, static_cast<std::size_t>(size))))
        Raise<CIOException>(kWriteFailed);
}

void CFileOutputStream::Open(const wchar* path, bool append) {
    Close();
    writeError_ = 0;
    // First, so that a failed allocation leaves no file open.
    CString name(path);
    // Not zeroed, and kept until the next opening: the runtime writes it out when the program ends.
    if (!block_) block_.reset(new char[kBlockSize]);
    file_ = filesystem::OpenOutput(path, append);
    if (!file_) {
        NoteOpenFailure(path);
        Raise<CFileAccessException>(kCannotOpen, PathReason(kCannotOpen.reason, path));
    }
    std::setvbuf(file_, block_.get(), _IOFBF, kBlockSize);
    name_ = std::move(name);
    append_ = append;
    writing_ = false;
}

bool CFileOutputStream::WritesAtPosition() const {
    return file_ && !append_ && filesystem::HasPositions(file_);
}

void CFileOutputStream::RaiseWriteError() const {
    if (writeError_ != 0) Raise<CIOException>(kWriteFailed);
}

void CFileOutputStream::CloseFile() {
    // Kept for callers: a closing never raises. `CloseOutput` and `GetWriteError` tell what was lost.
    if (file_) NoteWrite(filesystem::CloseOutput(std::exchange(file_, nullptr)));
}

bool CFileOutputStream::NoteWrite(bool isGood) {
    if (!isGood && writeError_ == 0) writeError_ = filesystem::GetError();
    return isGood;
}

bool CFileOutputStream::NoteSeek(bool isGood) {
    // A seek writes out the buffer first. Runtimes differ in whether it fails when that does, but each marks
    // the file.
    NoteWrite(std::ferror(file_) == 0);
    return isGood;
}

} // namespace vorlund
