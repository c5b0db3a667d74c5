// PE images. The format: "PE Format" in the Windows documentation.
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/plugins/PluginEntries.h"

#include <algorithm>
#include <string>
#include <vector>

/// The beginning of the image that this code is part of; the linker defines it.
extern "C" const char __ImageBase[];

namespace vorlund {
namespace {

using THeaders = IMAGE_NT_HEADERS;
using TSection = IMAGE_SECTION_HEADER;
using TSections = std::vector<TSection>;

/// More than any library needs.
constexpr DWORD kMaxImports = 256;

const IMAGE_DOS_HEADER& OwnDosHeader() {
    return *reinterpret_cast<const IMAGE_DOS_HEADER*>(__ImageBase);
}

const THeaders& OwnHeaders() {
    return *reinterpret_cast<const THeaders*>(__ImageBase + OwnDosHeader().e_lfanew);
}

/// What is in front of every other header, the same for all machines.
struct TFileHeaders {
    DWORD signature;
    IMAGE_FILE_HEADER file;
};

/// For people.
std::string DescribeMachine(WORD machine) {
    switch (machine) {
    case IMAGE_FILE_MACHINE_I386:
        return "x86, 32 bits";
    case IMAGE_FILE_MACHINE_AMD64:
        return "x86-64";
    case IMAGE_FILE_MACHINE_ARMNT:
        return "ARM, 32 bits";
    case IMAGE_FILE_MACHINE_ARM64:
        return "AArch64";
    }
    return "machine " + std::to_string(machine);
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

/// The headers of an image for this process, through `read(offset, buffer, size)`; false when it is none.
template <class TRead> bool ReadHeaders(const TRead& read, THeaders& headers, TSections& sections) {
    IMAGE_DOS_HEADER dos;
    if (!read(0, &dos, sizeof(dos)) || dos.e_lfanew < 0) return false;
    const auto at = static_cast<std::uint64_t>(dos.e_lfanew);
    if (!read(at, &headers, sizeof(headers)) || !IsForThisProcess(headers)) return false;
    sections.resize(headers.FileHeader.NumberOfSections);
    return read(at + sizeof(headers), sections.data(), sections.size() * sizeof(TSection));
}

} // namespace

TImageLook CImageFile::Look() const {
    IMAGE_DOS_HEADER dos;
    if (!Read(0, &dos, sizeof(dos)) || dos.e_magic != OwnDosHeader().e_magic || dos.e_lfanew < 0)
        return {TImageKind::NoLibrary};
    const auto at = static_cast<std::uint64_t>(dos.e_lfanew);
    TFileHeaders first;
    if (!Read(at, &first, sizeof(first)) || first.signature != OwnHeaders().Signature)
        return {TImageKind::NoLibrary};
    if (first.file.Machine != OwnHeaders().FileHeader.Machine)
        return {TImageKind::OtherMachine, DescribeMachine(first.file.Machine)};
    THeaders headers;
    if (!Read(at, &headers, sizeof(headers))) return LackOfBytes({at, sizeof(headers)});
    if (!IsForThisProcess(headers)) return {TImageKind::NoLibrary};
    const IMAGE_OPTIONAL_HEADER& image = headers.OptionalHeader;
    if (!Has(0, image.SizeOfHeaders)) return LackOfBytes({0, image.SizeOfHeaders});
    TSections sections(headers.FileHeader.NumberOfSections);
    const std::size_t size = sections.size() * sizeof(TSection);
    if (!Read(at + sizeof(headers), sections.data(), size)) return LackOfBytes({at + sizeof(headers), size});
    for (const TSection& section : sections)
        if (section.PointerToRawData != 0 && !Has(section.PointerToRawData, section.SizeOfRawData))
            return LackOfBytes({section.PointerToRawData, section.SizeOfRawData});
    if (!AreInOrder(sections, image) || !AreDirectoriesInside(image)) return {TImageKind::NoLibrary};

    // Linkers put the names of the exports into the range of their directory.
    const IMAGE_DATA_DIRECTORY& exports = image.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const std::uint64_t offset = FindOffset(sections, exports);
    if (offset == 0) return {TImageKind::OtherLibrary};
    return LookForNames({offset, exports.Size}, kInitEntryName.whole, kCloseEntryName.whole);
}

CImageFile::TRange CImageFile::FindInfo() const {
    THeaders headers;
    TSections sections;
    const auto read = [this](std::uint64_t offset, void* buffer, std::size_t size) {
        return Read(offset, buffer, size);
    };
    if (!ReadHeaders(read, headers, sections)) return {};
    for (const TSection& section : sections) {
        const std::string_view name(reinterpret_cast<const char*>(section.Name), sizeof(section.Name));
        if (name == kInfoSection && section.PointerToRawData != 0)
            return {section.PointerToRawData, section.SizeOfRawData};
    }
    return {};
}

std::vector<std::string> CImageFile::ReadNeeded() const {
    std::vector<std::string> names;
    THeaders headers;
    TSections sections;
    const auto read = [this](std::uint64_t offset, void* buffer, std::size_t size) {
        return Read(offset, buffer, size);
    };
    if (!ReadHeaders(read, headers, sections)) return names;
    const IMAGE_DATA_DIRECTORY& imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (DWORD i = 0; i < kMaxImports; ++i) {
        IMAGE_IMPORT_DESCRIPTOR library;
        constexpr DWORD kSize = sizeof(library);
        const std::uint64_t at = FindOffset(sections, {imports.VirtualAddress + i * kSize, kSize});
        if (at == 0 || !Read(at, &library, kSize) || library.Name == 0) break;
        std::string name;
        char unit = 0;
        for (DWORD j = 0; j < MAX_PATH; ++j) {
            const std::uint64_t from = FindOffset(sections, {library.Name + j, 1});
            if (from == 0 || !Read(from, &unit, 1) || unit == 0) break;
            name += unit;
        }
        if (!name.empty() && unit == 0) names.push_back(name);
    }
    return names;
}

} // namespace vorlund
