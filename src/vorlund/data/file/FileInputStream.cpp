#include "vorlund/data/file/FileInputStream.h"

#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/base/NoMediaSamples.h"
#include "vorlund/data/base/NoteTaking.h"
#include "vorlund/data/file/OpenFailure.h"

#include <vorlund/Exception.h>

#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/FileInputStream_win32");
constexpr const wchar* kRead = VRL_L("vorlund::CFileInputStream::Read");
constexpr const wchar* kSeek = VRL_L("vorlund::CFileInputStream::Seek");
constexpr const wchar* kNotOpen = VRL_L("File is not open");

constexpr TFailure kCannotOpen{VRL_L("vorlund::CFileInputStream::Open"), kFile, 62,
                               VRL_L("Cannot open '%s' for reading")};
constexpr TFailure kLengthNotOpen{VRL_L("vorlund::CFileInputStream::GetLength"), kFile, 96, kNotOpen};
constexpr TFailure kSeekNotOpen{kSeek, kFile, 103, kNotOpen};
constexpr TFailure kSeekFailed{kSeek, kFile, 106, VRL_L("_fseeki64 failed")};
constexpr TFailure kTellNotOpen{VRL_L("vorlund::CFileInputStream::Tell"), kFile, 112, kNotOpen};
constexpr TFailure kReadNullBuffer{kRead, kFile, 126, VRL_L("buffer is NULL")};
constexpr TFailure kReadNotOpen{kRead, kFile, 129, kNotOpen};
constexpr TFailure kReadNullSample{kRead, kFile, 137, VRL_L("sample is NULL")};
constexpr TFailure kReadNoSamples{kRead, kFile, 139, VRL_L("Media samples are not supported")};
constexpr TFailure kSkipNotOpen{VRL_L("vorlund::CFileInputStream::Skip"), kFile, 145, kNotOpen};
constexpr TFailure kFlushNotSupported{VRL_L("vorlund::CFileInputStream::Flush"), kFile, 152,
                                      VRL_L("Flush is not supported")};

} // namespace

void CFileInputStream::Close() {
    reader_.Close();
    if (*name_.GetBuffer()) name_ = CString();
}

std::uint32_t CFileInputStream::GetCapabilities() {
    return reader_.IsOpen() ? STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ : 0;
}

std::int64_t CFileInputStream::GetLength() {
    if (!reader_.IsOpen()) Raise<COperationNotSupportedException>(kLengthNotOpen);
    return reader_.GetLength();
}

void CFileInputStream::Flush() {
    Raise<COperationNotSupportedException>(kFlushNotSupported);
}

void CFileInputStream::Seek(std::int64_t position) {
    if (!reader_.IsOpen()) Raise<COperationNotSupportedException>(kSeekNotOpen);
    if (!reader_.Seek(position)) Raise<CIOException>(kSeekFailed);
}

std::int64_t CFileInputStream::Tell() {
    if (!reader_.IsOpen()) Raise<COperationNotSupportedException>(kTellNotOpen);
    return reader_.Tell();
}

bool CFileInputStream::Eof() {
    if (!reader_.IsOpen()) return true;
    return static_cast<std::uint64_t>(reader_.Tell()) >= static_cast<std::uint64_t>(reader_.GetLength());
}

void CFileInputStream::Read(IMediaSample* sample) {
    RefuseMediaSample(sample, kReadNullSample, kReadNoSamples);
}

std::uint64_t CFileInputStream::Read(void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kReadNullBuffer);
    if (!reader_.IsOpen()) Raise<CIOException>(kReadNotOpen);
    // Kept for callers: only the low 32 bits of the size count.
    const std::uint32_t count = reader_.Read(buffer, static_cast<std::uint32_t>(size));
    notes::CountBytesRead(count);
    return count;
}

CLoan CFileInputStream::Lend(std::uint64_t size, std::uint64_t grain) {
    if (!reader_.IsOpen()) Raise<CIOException>(kReadNotOpen);
    std::uint32_t count = 0;
    const unsigned char* const bytes = reader_.Lend(size, grain, count);
    if (!bytes) return {};
    notes::CountBytesRead(count);
    return {bytes, count};
}

void CFileInputStream::Skip(std::uint64_t count) {
    if (!reader_.IsOpen()) Raise<CIOException>(kSkipNotOpen);
    // Wraps: a count beyond the positive range steps back, and fails before the start of the file.
    Seek(static_cast<std::int64_t>(static_cast<std::uint64_t>(reader_.Tell()) + count));
}

void CFileInputStream::Open(const wchar* path) {
    Close();
    // First, so that a text that cannot be copied leaves no file open.
    CString name(path);
    if (!reader_.Open(path)) {
        NoteOpenFailure(path);
        Raise<CFileAccessException>(kCannotOpen, PathReason(kCannotOpen.reason, path));
    }
    name_ = std::move(name);
}

} // namespace vorlund
