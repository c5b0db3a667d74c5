// What the file classes need of the operating system. A port supplies everything declared here in a file
// FileSystem_<system>.cpp; all rules and all failures are the callers'. Nothing here raises, except
// std::bad_alloc.
//
// Paths are zero-terminated UTF-16 with "/" or "\" between folders. A null path and one that the system
// cannot express name nothing. Files are opened so that child processes do not inherit them.
#pragma once

#include <vorlund/Platform.h>
#include <vorlund/StreamErrors.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace vorlund::filesystem {

/// What a path names. Links count as what they lead to, and as files when they lead nowhere.
enum class TEntryKind {
    Missing,   ///< nothing
    Unknown,   ///< perhaps something, but the system does not tell
    File,      ///< anything that is not a directory
    Directory, ///< a directory
};

TEntryKind GetKind(const wchar* path);

/// Goes through the entries of a folder once, in the system's own order, "." and ".." included.
class CFolderSearch {
public:
    /// \param folderPath  ends in "/"; a folder that may not be searched has no entries
    explicit CFolderSearch(const wchar* folderPath);
    CFolderSearch(const CFolderSearch&) = delete;
    CFolderSearch& operator=(const CFolderSearch&) = delete;
    ~CFolderSearch();

    /// Goes to the next entry; false when there is none, and when the search has failed.
    bool Next();
    /// True when the system could not search to the end: it had no descriptor or memory left, or could not
    /// read the folder.
    bool HasFailed() const { return hasFailed_; }
    /// Name and kind (`File` or `Directory`) of the entry; the name is valid until the next `Next`.
    const wchar* GetName() const;
    TEntryKind GetKind() const;
    /// True when the listing and the folder's rights tell already that the entry can be reached and is of its
    /// kind.
    bool IsSure() const;
    /// What the entry, whose whole path is `path`, names by now.
    TEntryKind LookAgain(const wchar* path) const;

private:
    struct TState;
    /// Empty when the folder cannot be searched.
    std::unique_ptr<TState> state_;
    bool hasFailed_ = false;
};

/// What the system says of the call of this file that has just failed in this thread: `errno`, or on Windows
/// the number that `GetLastError` had. Never 0.
std::uint32_t GetError();

/// Opens a file for reading at positions of the caller's choice; returns the C runtime's descriptor, or -1,
/// and puts the file's length into `length`. Opens no directories, and nothing that has no positions (pipes,
/// terminals). Does not wait for another process.
int OpenInput(const wchar* path, std::int64_t& length);

/// Why the opening of `path` that has just failed in this thread failed; asked before anything else of this
/// file.
TOpenFailure ExplainOpening(const wchar* path);

/// Reads at most `count` bytes at `position`. 0 at the end of the file, and when the system refuses; `error`,
/// if given, then gets what `GetError` says, and else stays.
std::uint32_t ReadAt(int descriptor, std::int64_t position, void* buffer, std::uint32_t count,
                     std::uint32_t* error = nullptr);

void CloseInput(int descriptor);

/// Opens an existing file for reading and writing at positions of the caller's choice, as `OpenInput`.
int OpenUpdate(const wchar* path, std::int64_t& length);

/// Writes at most `count` bytes at `position`, at once; 0 when the system refuses.
std::uint32_t WriteAt(int descriptor, std::int64_t position, const void* buffer, std::uint32_t count);

/// Closes in any case. False when the system says now that it has not taken what was written.
bool CloseUpdate(int descriptor);

/// Opens or creates a file for writing: emptied, or, with `append`, with every write going to its end and the
/// position at 0 until the first one. Returns null when it cannot. Does not wait for another process.
std::FILE* OpenOutput(const wchar* path, bool append);

/// Writes `size` bytes through the file's buffer, without a lock of the file: one thread at a time uses it.
/// False when the system takes less.
bool Write(std::FILE* file, const void* buffer, std::size_t size);

/// Writes out what the file buffers. False when the system takes less.
bool Flush(std::FILE* file);

/// Writes out what the file buffers and closes it in any case. False when the system took less, or says so
/// now of what it took before.
bool CloseOutput(std::FILE* file);

/// Sets the position, counted from the start or from the end of the file; writes out the buffer first. False
/// on failure.
bool SeekFromStart(std::FILE* file, std::int64_t position);
bool SeekToEnd(std::FILE* file);

/// Whether the file has positions that can be set: pipes and terminals have none.
bool HasPositions(std::FILE* file);

/// The position, or -1 when the file has none.
std::int64_t Tell(std::FILE* file);

} // namespace vorlund::filesystem
