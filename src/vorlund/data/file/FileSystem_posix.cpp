// Before any header: positions, lengths and times are 64-bit, on 32-bit systems too.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "vorlund/data/file/FileSystem.h"

#include "vorlund/data/file/PathCodec_posix.h"

#include <cerrno>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorlund::filesystem {
namespace {

static_assert(sizeof(off_t) == 8);

/// Everybody may read and write, as far as the user's mask allows.
constexpr mode_t kNewFileMode = 0666;

TEntryKind KindOf(const struct stat& status) {
    return S_ISDIR(status.st_mode) ? TEntryKind::Directory : TEntryKind::File;
}

/// The kind of `name` in the open folder, or anywhere with AT_FDCWD.
TEntryKind KindAt(int folder, const char* name) {
    struct stat status;
    if (fstatat(folder, name, &status, 0) == 0) return KindOf(status);
    // A link that leads nowhere is an entry, too.
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) return KindOf(status);
    const bool missing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
    return missing ? TEntryKind::Missing : TEntryKind::Unknown;
}

/// Whether a search fails by this. Folders that are not there, or not for this user, have no entries.
bool IsFault(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO;
}

/// The path for the system; false, and an error noted, when it has none.
bool EncodeName(const wchar* path, std::string& bytes) {
    if (pathcodec::Encode(path, bytes)) return true;
    errno = EILSEQ;
    return false;
}

/// Opens without waiting for the other end of a pipe; reading and writing then wait as usual.
int OpenWithoutWaiting(const std::string& path, int flags, struct stat& status) {
    const int descriptor = open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kNewFileMode);
    if (descriptor < 0) return -1;
    if (fstat(descriptor, &status) != 0) {
        close(descriptor);
        return -1;
    }
    // Regular files never wait, so the flag means nothing for them.
    if (!S_ISREG(status.st_mode)) fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return descriptor;
}

/// Opens a file that has positions, and measures it.
int OpenMeasured(const wchar* path, int flags, std::int64_t& length) {
    length = 0;
    std::string bytes;
    if (!EncodeName(path, bytes)) return -1;
    struct stat status;
    const int descriptor = OpenWithoutWaiting(bytes, flags, status);
    if (descriptor < 0) return -1;
    if (S_ISREG(status.st_mode)) {
        length = status.st_size;
        return descriptor;
    }
    // Devices are measured by going to their end, which pipes and terminals refuse.
    length = S_ISDIR(status.st_mode) ? -1 : lseek(descriptor, 0, SEEK_END);
    if (length >= 0) return descriptor;
    close(descriptor);
    length = 0;
    errno = S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
    return -1;
}

} // namespace

TEntryKind GetKind(const wchar* path) {
    std::string bytes;
    return pathcodec::Encode(path, bytes) ? KindAt(AT_FDCWD, bytes.c_str()) : TEntryKind::Missing;
}

struct CFolderSearch::TState {
    explicit TState(DIR* openFolder) : folder(openFolder) {}
    TState(const TState&) = delete;
    TState& operator=(const TState&) = delete;
    ~TState() { closedir(folder); }

    DIR* const folder;
    /// Who may list a folder need not be allowed to use what is in it.
    const bool isOpenToUse = faccessat(dirfd(folder), ".", X_OK, AT_EACCESS) == 0;
    const dirent* entry = nullptr;
    wstring name;
    TEntryKind kind = TEntryKind::Missing;
};

CFolderSearch::CFolderSearch(const wchar* folderPath) {
    std::string bytes;
    if (!pathcodec::Encode(folderPath, bytes)) return;
    DIR* const folder = opendir(bytes.c_str());
    if (!folder) {
        hasFailed_ = IsFault(errno);
        return;
    }
    try {
        state_ = std::make_unique<TState>(folder);
    } catch (...) {
        closedir(folder);
        throw;
    }
}

CFolderSearch::~CFolderSearch() = default;

bool CFolderSearch::Next() {
    if (!state_) return false;
    errno = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the folder is opened for this search only.
    const dirent* const entry = state_->entry = readdir(state_->folder);
    if (!entry) {
        hasFailed_ = IsFault(errno);
        return false;
    }
    state_->name = pathcodec::Decode(entry->d_name);
    if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
        state_->kind = KindAt(dirfd(state_->folder), entry->d_name);
        // It was listed, so it is a directory or a file; whether it can be used shows when it is used.
        if (state_->kind != TEntryKind::Directory) state_->kind = TEntryKind::File;
    } else {
        state_->kind = entry->d_type == DT_DIR ? TEntryKind::Directory : TEntryKind::File;
    }
    return true;
}

const wchar* CFolderSearch::GetName() const {
    return state_->name.c_str();
}

TEntryKind CFolderSearch::GetKind() const {
    return state_->kind;
}

bool CFolderSearch::IsSure() const {
    const auto type = state_->entry->d_type;
    return state_->isOpenToUse && type != DT_UNKNOWN && type != DT_LNK;
}

TEntryKind CFolderSearch::LookAgain(const wchar*) const {
    // Beginning at the open folder, the system need not go through the path.
    return KindAt(dirfd(state_->folder), state_->entry->d_name);
}

int OpenInput(const wchar* path, std::int64_t& length) {
    return OpenMeasured(path, O_RDONLY, length);
}

int OpenUpdate(const wchar* path, std::int64_t& length) {
    return OpenMeasured(path, O_RDWR, length);
}

TOpenFailure ExplainOpening(const wchar*) {
    const std::uint32_t code = GetError();
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return {OPEN_CAUSE_MISSING, code};
    case EISDIR:
        return {OPEN_CAUSE_FOLDER, code};
    case EACCES:
    case EPERM:
    case EROFS:
        return {OPEN_CAUSE_NOT_PERMITTED, code};
    case EBUSY:
    case ETXTBSY:
        return {OPEN_CAUSE_BUSY, code};
    // A pipe that nobody reads, when it is opened for writing, and what has no device.
    case ENXIO:
    case ESPIPE:
        return {OPEN_CAUSE_NO_POSITIONS, code};
    case EINVAL:
    case EILSEQ:
    case ELOOP:
    case ENAMETOOLONG:
        return {OPEN_CAUSE_NAME, code};
    case EMFILE:
    case ENFILE:
        return {OPEN_CAUSE_TOO_MANY_FILES, code};
    default:
        return {OPEN_CAUSE_OTHER, code};
    }
}

std::uint32_t GetError() {
    return errno != 0 ? static_cast<std::uint32_t>(errno) : EIO;
}

std::uint32_t ReadAt(int descriptor, std::int64_t position, void* buffer, std::uint32_t count,
                     std::uint32_t* error) {
    ssize_t result;
    do {
        result = pread(descriptor, buffer, count, position);
    } while (result < 0 && errno == EINTR);
    if (result >= 0) return static_cast<std::uint32_t>(result);
    if (error) *error = GetError();
    return 0;
}

void CloseInput(int descriptor) {
    close(descriptor);
}

std::uint32_t WriteAt(int descriptor, std::int64_t position, const void* buffer, std::uint32_t count) {
    ssize_t result;
    do {
        result = pwrite(descriptor, buffer, count, position);
    } while (result < 0 && errno == EINTR);
    return result > 0 ? static_cast<std::uint32_t>(result) : 0;
}

bool CloseUpdate(int descriptor) {
    return close(descriptor) == 0;
}

std::FILE* OpenOutput(const wchar* path, bool append) {
    std::string bytes;
    if (!EncodeName(path, bytes)) return nullptr;
    struct stat status;
    const int descriptor =
        OpenWithoutWaiting(bytes, O_WRONLY | O_CREAT | (append ? O_APPEND : O_TRUNC), status);
    if (descriptor < 0) return nullptr;
    std::FILE* const file = fdopen(descriptor, append ? "ab" : "wb");
    if (!file) {
        close(descriptor);
        return nullptr;
    }
    // The runtime has gone to the end already.
    if (append) SeekFromStart(file, 0);
    return file;
}

bool Write(std::FILE* file, const void* buffer, std::size_t size) {
    return fwrite_unlocked(buffer, 1, size, file) == size;
}

bool Flush(std::FILE* file) {
    return std::fflush(file) == 0;
}

bool CloseOutput(std::FILE* file) {
    return std::fclose(file) == 0;
}

bool SeekFromStart(std::FILE* file, std::int64_t position) {
    return fseeko(file, position, SEEK_SET) == 0;
}

bool SeekToEnd(std::FILE* file) {
    return fseeko(file, 0, SEEK_END) == 0;
}

bool HasPositions(std::FILE* file) {
    return ftello(file) >= 0;
}

std::int64_t Tell(std::FILE* file) {
    return ftello(file);
}

} // namespace vorlund::filesystem
