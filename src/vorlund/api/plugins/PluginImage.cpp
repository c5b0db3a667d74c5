// From a plug-in's file to its first use, the second step: `CPluginStore` (PluginStore.cpp) finds a file by
// its name and asks `IsPlugin` here. What that looks at is the system's part: ELF images in
// PluginImage_linux.cpp, PE images in PluginImage_win32.cpp. They refuse without a word, so a file that is
// skipped can be traced to the condition there that fails. A file that passes is loaded by PluginModule.h,
// again from `CPluginStore::TData::Load`.
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/data/file/FileSystem.h"

#include <string>

namespace vorlund {

CImageFile::CImageFile(const wchar* path) : file_(filesystem::OpenInput(path, length_)) {}

CImageFile::~CImageFile() {
    if (file_ >= 0) filesystem::CloseInput(file_);
}

bool CImageFile::Read(std::uint64_t offset, void* buffer, std::size_t size) const {
    return Has(offset, size) && filesystem::ReadAt(file_, static_cast<std::int64_t>(offset), buffer,
                                                   static_cast<std::uint32_t>(size)) == size;
}

bool CImageFile::Has(std::uint64_t offset, std::uint64_t size) const {
    const auto length = static_cast<std::uint64_t>(length_);
    return offset <= length && size <= length - offset;
}

bool CImageFile::HasNames(std::uint64_t offset, std::uint64_t size, std::string_view first,
                          std::string_view second) const {
    if (!Has(offset, size)) return false;
    std::string names(static_cast<std::size_t>(size), '\0');
    if (!Read(offset, names.data(), names.size())) return false;
    const auto has = [&names](std::string_view name) {
        return names.find(std::string(name) + '\0') != std::string::npos;
    };
    return has(first) && has(second);
}

} // namespace vorlund
