// The look at a file before the system loads it as a plug-in. Loading runs a library's own code, so a file
// that is no plug-in is not loaded at all. And system loaders trust the headers of an image: one that is cut
// short or damaged could end the process. What a file claims costs nothing: all that is read is bounded,
// whatever the size of the file and of the tables that its headers tell of.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorlund {

/// A file that may be the image of a plug-in; an empty one when it cannot be read.
class CImageFile {
public:
    explicit CImageFile(const wchar* path);
    CImageFile(const CImageFile&) = delete;
    CImageFile& operator=(const CImageFile&) = delete;
    ~CImageFile();

    /// Whether the file is a shared library for this process by its headers, has every byte that they tell
    /// of, and names both entry points. A port supplies this in a file PluginImage_<system>.cpp. Raises
    /// `std::bad_alloc`.
    bool IsPlugin() const;

private:
    /// Fills `buffer` from `offset`; false when the file ends before.
    bool Read(std::uint64_t offset, void* buffer, std::size_t size) const;
    /// Whether the file has the bytes.
    bool Has(std::uint64_t offset, std::uint64_t size) const;
    /// Whether a part of the file, at most 64 MiB long, holds both names, each followed by a zero.
    bool HasNames(std::uint64_t offset, std::uint64_t size, std::string_view first,
                  std::string_view second) const;

    std::int64_t length_ = 0;
    int file_;
};

} // namespace vorlund
