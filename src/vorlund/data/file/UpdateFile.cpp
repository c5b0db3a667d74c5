#include "vorlund/data/file/UpdateFile.h"

#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/file/FileSystem.h"
#include "vorlund/data/file/OpenFailure.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/UpdateFile");
constexpr const wchar* kOpen = VRL_L("vorlund::CUpdateFile::CUpdateFile");
constexpr const wchar* kCannotWrite = VRL_L("Cannot write the file");

constexpr TFailure kNotOpenedToRead{kOpen, kFile, 1, VRL_L("Cannot open '%s' for reading")};
constexpr TFailure kNotOpenedToWrite{kOpen, kFile, 2, VRL_L("Cannot open '%s' for writing")};
constexpr TFailure kNotRead{VRL_L("vorlund::CUpdateFile::Read"), kFile, 3, VRL_L("Cannot read the file")};
constexpr TFailure kNotWritten{VRL_L("vorlund::CUpdateFile::Write"), kFile, 4, kCannotWrite};
constexpr TFailure kNotClosed{VRL_L("vorlund::CUpdateFile::Close"), kFile, 5, kCannotWrite};

/// What the system is given at once.
constexpr std::uint64_t kMaxStep = std::uint64_t{1} << 20;

} // namespace

CUpdateFile::CUpdateFile(const wchar* path, bool isReadOnly) {
    std::int64_t length = 0;
    descriptor_ = isReadOnly ? filesystem::OpenInput(path, length) : filesystem::OpenUpdate(path, length);
    length_ = static_cast<std::uint64_t>(length);
    if (descriptor_ >= 0) return;
    NoteOpenFailure(path);
    if (isReadOnly) Raise<CFileAccessException>(kNotOpenedToRead, PathReason(kNotOpenedToRead.reason, path));
    Raise<CFileAccessException>(kNotOpenedToWrite, PathReason(kNotOpenedToWrite.reason, path));
}

CUpdateFile::~CUpdateFile() {
    if (descriptor_ >= 0) filesystem::CloseInput(descriptor_);
}

std::uint64_t CUpdateFile::Read(std::uint64_t position, void* buffer, std::uint64_t size) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::uint64_t done = 0;
    while (done < size) {
        std::uint32_t error = 0;
        const auto step = static_cast<std::uint32_t>(std::min(size - done, kMaxStep));
        const std::uint32_t count = filesystem::ReadAt(
            descriptor_, static_cast<std::int64_t>(position + done), bytes + done, step, &error);
        if (error != 0) Raise<CIOException>(kNotRead);
        if (count == 0) break;
        done += count;
    }
    return done;
}

void CUpdateFile::Write(std::uint64_t position, const void* buffer, std::uint64_t size) {
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    for (std::uint64_t done = 0; done < size;) {
        const auto step = static_cast<std::uint32_t>(std::min(size - done, kMaxStep));
        const std::uint32_t count =
            filesystem::WriteAt(descriptor_, static_cast<std::int64_t>(position + done), bytes + done, step);
        if (count == 0) Raise<CIOException>(kNotWritten);
        done += count;
        length_ = std::max(length_, position + done);
    }
}

void CUpdateFile::Close() {
    if (!filesystem::CloseUpdate(std::exchange(descriptor_, -1))) Raise<CIOException>(kNotClosed);
}

} // namespace vorlund
