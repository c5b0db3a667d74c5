// The look at a file before the system loads it as a plug-in. Loading runs a library's own code, so what is
// no plug-in is not loaded at all; and system loaders trust the headers of an image, while what lies behind
// the end of its file ends the process.
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

    /// Whether the file is a shared library for this process by its headers, has every byte that they speak
    /// of, and names both entry points. Implemented per system, in PluginImage_<system>.cpp.
    bool IsPlugin() const;

private:
    /// Fills `buffer` from `offset`; false when the file ends before.
    bool Read(std::uint64_t offset, void* buffer, std::size_t size) const;
    /// Whether the file has the bytes.
    bool Has(std::uint64_t offset, std::uint64_t size) const;
    /// Whether both names stand in a part of the file, each with a zero behind it.
    bool HasNames(std::uint64_t offset, std::uint64_t size, std::string_view first,
                  std::string_view second) const;

    std::int64_t length_ = 0;
    int file_;
};

} // namespace vorlund
