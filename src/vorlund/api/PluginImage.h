// The look at a file before the system loads it as a shared library. System loaders trust the headers of an
// image, and what lies behind the end of its file ends the process.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// A file that may be an image; empty when it cannot be read.
class CImageFile {
public:
    explicit CImageFile(const wchar* path);
    CImageFile(const CImageFile&) = delete;
    CImageFile& operator=(const CImageFile&) = delete;
    ~CImageFile();

    /// Whether the file is a shared library for this process by its headers, and has every byte that they
    /// speak of. Implemented per system, in PluginImage_<system>.cpp.
    bool IsWhole() const;

private:
    /// Fills `buffer` from `offset`; false when the file ends before.
    bool Read(std::uint64_t offset, void* buffer, std::size_t size) const;
    /// Whether the file has the bytes.
    bool Has(std::uint64_t offset, std::uint64_t size) const;

    std::int64_t length_ = 0;
    int file_;
};

} // namespace vorlund
