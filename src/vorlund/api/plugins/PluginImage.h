// The look at a file before the system loads it as a plug-in. Loading runs a library's own code, so a file
// that is no plug-in is not loaded at all. And system loaders trust the headers of an image: one that is cut
// short or damaged could end the process. What a file claims costs nothing: all that is read is bounded,
// whatever the size of the file and of the tables that its headers tell of.
#pragma once

#include <vorlund/Platform.h>
#include <vorlund/PluginInfo.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlund {

/// What a file is by its headers.
enum class TImageKind {
    Plugin,
    NoLibrary,    ///< no shared library of this system, or one with damaged headers
    OtherMachine, ///< a shared library for another kind of machine
    Cut,          ///< a shared library that lacks bytes that its headers tell of
    OtherLibrary, ///< a shared library with neither entry
    OneEntry,     ///< a shared library with one of the two entries, or with a table alone
};

/// The answer of a look; `detail` names the machine, the bytes that are there and those that should be, or
/// the missing entry.
struct TImageLook {
    TImageKind kind;
    std::string detail = {};
};

/// A file that may be the image of a plug-in; an empty one when it cannot be read. The system's half is in a
/// file PluginImage_<system>.cpp. The operations raise `std::bad_alloc`.
class CImageFile {
public:
    explicit CImageFile(const wchar* path);
    CImageFile(const CImageFile&) = delete;
    CImageFile& operator=(const CImageFile&) = delete;
    ~CImageFile();

    /// What the file is. `Plugin`: by its headers a shared library for this process that has every byte they
    /// tell of and names both entry points.
    TImageLook Look() const;
    bool IsPlugin() const { return Look().kind == TImageKind::Plugin; }

    /// The record of the section ".vrlinfo", with texts that end; nothing when the file has no such section,
    /// or something else in it.
    std::optional<TPluginInfoRecord> ReadInfo() const;

    /// The names of the libraries that the file needs, in its order, as far as it tells them. On Windows
    /// only, where the loader does not tell which is missing.
    std::vector<std::string> ReadNeeded() const;

private:
    /// A part of the file.
    struct TRange {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };

    /// Fills `buffer` from `offset`; false when the file ends before.
    bool Read(std::uint64_t offset, void* buffer, std::size_t size) const;
    /// Whether the file has the bytes.
    bool Has(std::uint64_t offset, std::uint64_t size) const;
    /// `Plugin`, `OneEntry` or `OtherLibrary`, by the names of the entries and of the table in a part of the
    /// file, at most 64 MiB long, each followed by a zero; `NoLibrary` when that cannot be read.
    TImageLook LookForNames(const TRange& range, const char* first, const char* second) const;
    /// `Cut`, because the file lacks bytes of this part.
    TImageLook LackOfBytes(const TRange& range) const;
    /// The bytes of the section in which the record lies; an empty range without one.
    TRange FindInfo() const;

    std::int64_t length_ = 0;
    int file_;
};

/// The name of that section.
inline constexpr std::string_view kInfoSection{".vrlinfo"};

} // namespace vorlund
