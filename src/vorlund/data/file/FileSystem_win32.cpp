#include "vorlund/data/file/FileSystem.h"

#include "vorlund/api/platform/WindowsLean.h"

#include <string>
#include <utility>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace vorlund::filesystem {
namespace {

TEntryKind KindOf(DWORD attributes) {
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? TEntryKind::Directory : TEntryKind::File;
}

bool IsMissing(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_DIRECTORY:
        return true;
    default:
        return false;
    }
}

/// Whether a search fails by this. Folders that are not there, or not for this user, have no entries.
bool IsFault(DWORD error) {
    switch (error) {
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_NO_SYSTEM_RESOURCES:
    case ERROR_CRC:
    case ERROR_READ_FAULT:
    case ERROR_GEN_FAILURE:
    case ERROR_IO_DEVICE:
        return true;
    default:
        return false;
    }
}

/// Whether there is a name at all; notes an error when not.
bool IsName(const wchar* path) {
    if (path) return true;
    _doserrno = ERROR_INVALID_NAME;
    return false;
}

HANDLE HandleOf(int descriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

/// Opens a file that has positions, and measures it.
int OpenMeasured(const wchar* path, int flags, std::int64_t& length) {
    length = 0;
    if (!IsName(path)) return -1;
    const int descriptor = _wopen(path, flags | _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) return -1;
    // The runtime sets positions of pipes, too, with results that mean nothing.
    length = GetFileType(HandleOf(descriptor)) == FILE_TYPE_PIPE ? -1 : _lseeki64(descriptor, 0, SEEK_END);
    if (length >= 0) return descriptor;
    _close(descriptor);
    length = 0;
    _doserrno = ERROR_SEEK_ON_DEVICE;
    return -1;
}

} // namespace

TEntryKind GetKind(const wchar* path) {
    if (!path) return TEntryKind::Missing;
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES) return KindOf(attributes);
    return IsMissing(GetLastError()) ? TEntryKind::Missing : TEntryKind::Unknown;
}

struct CFolderSearch::TState {
    TState() = default;
    TState(const TState&) = delete;
    TState& operator=(const TState&) = delete;
    ~TState() {
        if (search != INVALID_HANDLE_VALUE) FindClose(search);
    }

    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW entry;
    /// The system delivers the first entry when the search begins.
    bool isFirst = true;
};

CFolderSearch::CFolderSearch(const wchar* folderPath) {
    if (!folderPath) return;
    const wstring pattern = wstring(folderPath) + L"*.*";
    state_ = std::make_unique<TState>();
    state_->search = FindFirstFileW(pattern.c_str(), &state_->entry);
    if (state_->search != INVALID_HANDLE_VALUE) return;
    hasFailed_ = IsFault(GetLastError());
    state_.reset();
}

CFolderSearch::~CFolderSearch() = default;

bool CFolderSearch::Next() {
    if (!state_) return false;
    if (std::exchange(state_->isFirst, false)) return true;
    if (FindNextFileW(state_->search, &state_->entry)) return true;
    hasFailed_ = IsFault(GetLastError());
    return false;
}

const wchar* CFolderSearch::GetName() const {
    return state_->entry.cFileName;
}

TEntryKind CFolderSearch::GetKind() const {
    return KindOf(state_->entry.dwFileAttributes);
}

bool CFolderSearch::IsSure() const {
    // Paths that are too long and names that end in dots are listed, and cannot be used.
    return false;
}

TEntryKind CFolderSearch::LookAgain(const wchar* path) const {
    return filesystem::GetKind(path);
}

int OpenInput(const wchar* path, std::int64_t& length) {
    return OpenMeasured(path, _O_RDONLY, length);
}

int OpenUpdate(const wchar* path, std::int64_t& length) {
    return OpenMeasured(path, _O_RDWR, length);
}

TOpenFailure ExplainOpening(const wchar* path) {
    const std::uint32_t code = GetError();
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
        return {OPEN_CAUSE_MISSING, code};
    // Windows says of folders that they are not permitted.
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return {GetKind(path) == TEntryKind::Directory ? OPEN_CAUSE_FOLDER : OPEN_CAUSE_NOT_PERMITTED, code};
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_PIPE_BUSY:
        return {OPEN_CAUSE_BUSY, code};
    case ERROR_SEEK_ON_DEVICE:
        return {OPEN_CAUSE_NO_POSITIONS, code};
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return {OPEN_CAUSE_NAME, code};
    case ERROR_TOO_MANY_OPEN_FILES:
        return {OPEN_CAUSE_TOO_MANY_FILES, code};
    default:
        return {OPEN_CAUSE_OTHER, code};
    }
}

std::uint32_t GetError() {
    return _doserrno != 0 ? static_cast<std::uint32_t>(_doserrno) : ERROR_GEN_FAILURE;
}

std::uint32_t ReadAt(int descriptor, std::int64_t position, void* buffer, std::uint32_t count,
                     std::uint32_t* error) {
    // A read at a position (ReadFile with OVERLAPPED) would be one call, but takes Wine five times as long.
    if (_lseeki64(descriptor, position, SEEK_SET) >= 0) {
        const int result = _read(descriptor, buffer, count);
        if (result >= 0) return static_cast<std::uint32_t>(result);
    }
    if (error) *error = GetError();
    return 0;
}

void CloseInput(int descriptor) {
    _close(descriptor);
}

std::uint32_t WriteAt(int descriptor, std::int64_t position, const void* buffer, std::uint32_t count) {
    if (_lseeki64(descriptor, position, SEEK_SET) < 0) return 0;
    const int result = _write(descriptor, buffer, count);
    return result > 0 ? static_cast<std::uint32_t>(result) : 0;
}

bool CloseUpdate(int descriptor) {
    return _close(descriptor) == 0;
}

std::FILE* OpenOutput(const wchar* path, bool append) {
    if (!IsName(path)) return nullptr;
    const int descriptor =
        _wopen(path, _O_WRONLY | _O_CREAT | _O_BINARY | _O_NOINHERIT | (append ? _O_APPEND : _O_TRUNC),
               _S_IREAD | _S_IWRITE);
    if (descriptor < 0) return nullptr;
    std::FILE* const file = _wfdopen(descriptor, append ? L"ab" : L"wb");
    if (!file) _close(descriptor);
    return file;
}

bool Write(std::FILE* file, const void* buffer, std::size_t size) {
    return std::fwrite(buffer, 1, size, file) == size;
}

bool Flush(std::FILE* file) {
    return std::fflush(file) == 0;
}

bool CloseOutput(std::FILE* file) {
    // Not every runtime tells at the closing that the last bytes were refused.
    const bool isFlushed = Flush(file);
    return std::fclose(file) == 0 && isFlushed;
}

bool SeekFromStart(std::FILE* file, std::int64_t position) {
    return _fseeki64(file, position, SEEK_SET) == 0;
}

bool SeekToEnd(std::FILE* file) {
    return _fseeki64(file, 0, SEEK_END) == 0;
}

bool HasPositions(std::FILE* file) {
    // The runtime gives pipes positions that mean nothing.
    return GetFileType(HandleOf(_fileno(file))) != FILE_TYPE_PIPE && _ftelli64(file) >= 0;
}

std::int64_t Tell(std::FILE* file) {
    return _ftelli64(file);
}

} // namespace vorlund::filesystem
