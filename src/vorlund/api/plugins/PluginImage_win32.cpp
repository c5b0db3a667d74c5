// PE images. The format: "PE Format" in the Windows documentation.
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/plugins/PluginEntries.h"

#include <algorithm>
#include <vector>

/// The beginning of the image that this code is part of; the linker defines it.
extern "C" const char __ImageBase[];

namespace vorlund {
namespace {

using THeaders = IMAGE_NT_HEADERS;
using TSection = IMAGE_SECTION_HEADER;
using TSections = std::vector<TSection>;

const IMAGE_DOS_HEADER& OwnDosHeader() {
    return *reinterpret_cast<const IMAGE_DOS_HEADER*>(__ImageBase);
}

const THeaders& OwnHeaders() {
    return *reinterpret_cast<const THeaders*>(__ImageBase + OwnDosHeader().e_lfanew);
}

bool IsForThisProcess(const THeaders& headers) {
    const THeaders& own = OwnHeaders();
    return headers.Signature == own.Signature && headers.FileHeader.Machine == own.FileHeader.Machine &&
           headers.OptionalHeader.Magic == own.OptionalHeader.Magic &&
           headers.FileHeader.SizeOfOptionalHeader == sizeof(headers.OptionalHeader) &&
           (headers.FileHeader.Characteristics & IMAGE_FILE_DLL) != 0;
}

/// Whether the mapped ranges follow each other inside the image.
bool AreInOrder(const TSections& sections, const IMAGE_OPTIONAL_HEADER& image) {
    std::uint64_t end = image.SizeOfHeaders;
    for (const TSection& section : sections) {
        if (section.VirtualAddress < end) return false;
        end = std::uint64_t{section.VirtualAddress} + section.Misc.VirtualSize;
    }
    return end <= image.SizeOfImage;
}

/// Whether the image may be at the address that the file gives, and the tables that the loader reads are
/// inside it.
bool AreDirectoriesInside(const IMAGE_OPTIONAL_HEADER& image) {
    const auto isInside = [&image](const IMAGE_DATA_DIRECTORY& range) {
        return range.VirtualAddress <= image.SizeOfImage &&
               range.Size <= image.SizeOfImage - range.VirtualAddress;
    };
    const auto* const directories = image.DataDirectory;
    // Images begin at a multiple of 64 KiB.
    return (image.ImageBase & 0xFFFF) == 0 && image.AddressOfEntryPoint < image.SizeOfImage &&
           std::all_of(directories, directories + IMAGE_NUMBEROF_DIRECTORY_ENTRIES, isInside);
}

/// The offset in the file of a range of the image; 0, where no section can be, when the file does not hold
/// it.
std::uint64_t FindOffset(const TSections& sections, const IMAGE_DATA_DIRECTORY& range) {
    for (const TSection& section : sections) {
        if (range.VirtualAddress < section.VirtualAddress || section.PointerToRawData == 0) continue;
        const DWORD distance = range.VirtualAddress - section.VirtualAddress;
        if (distance > section.SizeOfRawData || range.Size > section.SizeOfRawData - distance) continue;
        return std::uint64_t{section.PointerToRawData} + distance;
    }
    return 0;
}

} // namespace

bool CImageFile::IsPlugin() const {
    IMAGE_DOS_HEADER dos;
    if (!Read(0, &dos, sizeof(dos)) || dos.e_magic != OwnDosHeader().e_magic || dos.e_lfanew < 0)
        return false;
    const auto at = static_cast<std::uint64_t>(dos.e_lfanew);
    THeaders headers;
    if (!Read(at, &headers, sizeof(headers)) || !IsForThisProcess(headers) ||
        !Has(0, headers.OptionalHeader.SizeOfHeaders))
        return false;
    TSections sections(headers.FileHeader.NumberOfSections);
    if (!Read(at + sizeof(headers), sections.data(), sections.size() * sizeof(TSection))) return false;
    const bool isComplete = std::all_of(sections.begin(), sections.end(), [this](const TSection& section) {
        return section.PointerToRawData == 0 || Has(section.PointerToRawData, section.SizeOfRawData);
    });
    if (!isComplete || !AreInOrder(sections, headers.OptionalHeader) ||
        !AreDirectoriesInside(headers.OptionalHeader))
        return false;

    // Linkers put the names of the exports into the range of their directory.
    const IMAGE_DATA_DIRECTORY& exports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const std::uint64_t offset = FindOffset(sections, exports);
    return offset != 0 && HasNames(offset, exports.Size, kInitEntryName.whole, kCloseEntryName.whole);
}

} // namespace vorlund
