/// \file
/// Files, folders and file streams. One thread at a time. Paths are UTF-16 with `/` or `\` between folders;
/// on POSIX they are UTF-8 outside, a byte that is not valid UTF-8 becomes one unit U+DC80 to U+DCFF and
/// back, and so does a `\` that belongs to a name: U+DC5C.
///
/// Reasons that name a path are in one buffer of the process: see `CException`.
#pragma once

#include <vorlund/ObjectList.h>
#include <vorlund/Stream.h>

namespace vorlund {

/// A file input stream: 64-bit positions, capabilities 7 when open and 0 when closed.
///
/// Bytes come through a buffer, and the position is known without asking the system: small reads, `Tell`, and
/// seeks to the current position or nearby are cheap. A seek that leaves the buffer drops it, so what follows
/// is read as it is then. Only the low 32 bits of a read's size count. When the system refuses to read, the
/// data end there, and nothing is raised: `GetReadError` (StreamErrors.h) tells.
///
/// A closed stream raises "File is not open": `CIOException` in `Read` and `Skip`,
/// `COperationNotSupportedException` in `GetLength`, `Seek` and `Tell`. `Seek`, and `Skip` by it, raise
/// `CIOException` "_fseeki64 failed" for a negative target and keep the position; `Skip` computes its target
/// in 64 bits, which wrap. `Flush` always raises `COperationNotSupportedException` "Flush is not supported".
class IFileInputStream : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x1B25AD54, 0xCF004351, 0x88BE2EA8, 0x6F49482D};

    /// Closes, then opens `path` for reading and measures its length, which is kept even if the file grows.
    /// Directories, and what has no positions (pipes, terminals), cannot be opened. Raises
    /// `CFileAccessException` "Cannot open '...' for reading"; the stream is then closed.
    virtual void Open(const wchar* path) = 0;

protected:
    ~IFileInputStream() = default;
};

/// A file output stream: 64-bit positions, capabilities 11 when open and 0 when closed.
///
/// Bytes go through the C runtime's buffer. `Write` raises `CIOException` "fwrite failed" when the system
/// takes less than it is given, and so does `Flush` for what was still buffered. `Close` and the last release
/// raise nothing.
///
/// \warning What `Close` cannot write is lost. `CloseOutput` (StreamErrors.h) closes and raises,
/// `GetWriteError` tells afterwards.
///
/// A closed stream raises "File is not open": `CIOException` in `Write`, `COperationNotSupportedException` in
/// `GetLength`, `Flush`, `Seek` and `Tell`. `Seek` raises `CIOException` "_fseeki64 failed", also where
/// `GetLength` uses it.
class IFileOutputStream : public IOutputStream {
public:
    using TBase = IOutputStream;
    static constexpr CId InterfaceId{0xB321E4B6, 0x6CD84F8B, 0x94D6DC1A, 0x14946231};

    /// Closes, then opens `path` for writing. With `append` the bytes stay and every write goes to the end,
    /// wherever the position is (0 at first); otherwise the file is emptied. Raises `CFileAccessException`
    /// "Cannot open '...' for writing"; the stream is then closed.
    virtual void Open(const wchar* path, bool append) = 0;

protected:
    ~IFileOutputStream() = default;
};

class IFolder;

/// An existing file by name.
class IFile : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xB3CD9843, 0x21DE668F, 0x6DED4892, 0xDE64E408};

    /// The name without its last "." and what follows it.
    virtual CString GetTitle() = 0;
    /// The path up to and including its last "/", or "./" when it has none.
    virtual CString GetFolderPath() = 0;
    /// What follows the last "." of the name; empty when there is none.
    virtual CString GetExtension() = 0;
    /// The folder, one reference for the caller, or null when not initialised. Raises as
    /// `IFolder::Initialize`.
    virtual IFolder* GetFolder() = 0;
    /// What follows the last "/" of the path; empty when not initialised.
    virtual CString GetName() = 0;
    /// The path with every `\` turned into "/".
    virtual CString GetPath() = 0;
    /// Names the file; returns the file itself, without a reference. Ignored when already initialised. Raises
    /// `CFileAccessException` "Cannot find '...'" and "'...' is a directory".
    virtual IFile* Initialize(const wchar* path) = 0;
    /// A new stream opened on the file, one reference for the caller, or null when not initialised. Raises as
    /// `Open`. The output stream empties the file.
    virtual IFileInputStream* OpenInputStream() = 0;
    virtual IFileOutputStream* OpenOutputStream() = 0;

protected:
    ~IFile() = default;
};

/// An existing directory by name.
class IFolder : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x073F714C, 0xD5A53317, 0x083B96CF, 0xEDA16CC5};

    /// A new list, owned by the caller, of one `IFile` per entry that is not a directory, in the order of the
    /// file system; empty when not initialised. An entry that cannot be reached is left out; one that
    /// vanishes meanwhile may be, or is found missing when it is used. A folder that is gone or may not be
    /// searched has no entries; one that the system cannot search for lack of descriptors or memory, or
    /// cannot read, raises `CFileAccessException` "Cannot search '...'".
    virtual IObjectList* EnumerateFiles() = 0;
    /// The same with one `IFolder` per directory, "." and ".." included.
    virtual IObjectList* EnumerateFolders() = 0;
    /// The last name of the path; empty when not initialised.
    virtual CString GetName() = 0;
    /// The path with forward slashes, ending in "/"; empty when not initialised.
    virtual CString GetPath() = 0;
    /// Names the folder. Ignored when already initialised. Raises `CFileAccessException` "Cannot find '...'"
    /// and "'...' is not a directory".
    virtual void Initialize(const wchar* path) = 0;

protected:
    ~IFolder() = default;
};

} // namespace vorlund
