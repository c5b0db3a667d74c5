// What the look at a PE file lets pass: images made field by field, of which none is ever loaded.
#include "api/plugins/PluginImages.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

extern "C" const char __ImageBase[];

namespace vorlund::test {
namespace {

/// An image with the parts that the look knows. Rows change them before they are written.
struct TImage {
    IMAGE_DOS_HEADER dos = {};
    IMAGE_NT_HEADERS headers = {};
    /// One with the names of the exports, one with nothing in the file.
    std::vector<IMAGE_SECTION_HEADER> sections;
    std::string names{"?VrlInitPlugin@@YA_NXZ\0?VrlClosePlugin@@YAXXZ\0", 46};

    static constexpr DWORD kNamesAt = 0x200;
    static constexpr DWORD kNamesAddress = 0x1000;

    TImage() : sections(2) {
        dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(__ImageBase);
        headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(__ImageBase + dos.e_lfanew);
        dos.e_lfanew = sizeof(dos);
        headers.FileHeader.NumberOfSections = 2;
        headers.FileHeader.Characteristics |= IMAGE_FILE_DLL;
        IMAGE_OPTIONAL_HEADER& image = headers.OptionalHeader;
        image.ImageBase = 0x10000000;
        image.AddressOfEntryPoint = 0;
        image.SizeOfHeaders = kNamesAt;
        image.SizeOfImage = 0x3000;
        for (IMAGE_DATA_DIRECTORY& directory : image.DataDirectory) directory = {};
        Exports() = {kNamesAddress, static_cast<DWORD>(names.size())};
        sections[0].VirtualAddress = kNamesAddress;
        sections[0].Misc.VirtualSize = 0x1000;
        sections[0].PointerToRawData = kNamesAt;
        sections[0].SizeOfRawData = static_cast<DWORD>(names.size());
        sections[1].VirtualAddress = 0x2000;
        sections[1].Misc.VirtualSize = 0x1000;
    }

    IMAGE_DATA_DIRECTORY& Exports() {
        return headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    }
    std::string GetBytes() const {
        std::string bytes(reinterpret_cast<const char*>(&dos), sizeof(dos));
        bytes.append(reinterpret_cast<const char*>(&headers), sizeof(headers));
        bytes.append(reinterpret_cast<const char*>(sections.data()), sections.size() * sizeof(sections[0]));
        bytes.resize(std::max<std::size_t>(bytes.size(), kNamesAt));
        return bytes + names;
    }
};

using TRow = TImageRow<TImage>;

class PluginImage : public testing::TestWithParam<TRow> {};

TEST_P(PluginImage, IsLookedAt) {
    TImage image;
    GetParam().change(image);
    EXPECT_EQ(IsPlugin(image.GetBytes()), GetParam().isPlugin);
}

const TRow kRows[] = {
    {"Unchanged", [](TImage&) {}, true},
    // Headers.
    {"OtherMark", [](TImage& image) { ++image.dos.e_magic; }, false},
    {"HeadersBeforeTheFile", [](TImage& image) { image.dos.e_lfanew = -1; }, false},
    {"HeadersBehindTheEnd", [](TImage& image) { image.dos.e_lfanew = 100000; }, false},
    {"OtherSignature", [](TImage& image) { ++image.headers.Signature; }, false},
    {"OtherMachine", [](TImage& image) { ++image.headers.FileHeader.Machine; }, false},
    {"OtherWordSize", [](TImage& image) { image.headers.OptionalHeader.Magic ^= 0x300; }, false},
    {"ShorterHeader", [](TImage& image) { --image.headers.FileHeader.SizeOfOptionalHeader; }, false},
    {"LongerHeader", [](TImage& image) { ++image.headers.FileHeader.SizeOfOptionalHeader; }, false},
    {"Program", [](TImage& image) { image.headers.FileHeader.Characteristics &= ~IMAGE_FILE_DLL; }, false},
    {"HeadersLongerThanTheFile", [](TImage& image) { image.headers.OptionalHeader.SizeOfHeaders = 0x1000; },
     false},
    {"NoSections", [](TImage& image) { image.headers.FileHeader.NumberOfSections = 0; }, false},
    {"MoreSectionsThanBytes", [](TImage& image) { image.headers.FileHeader.NumberOfSections = 0xFFFF; },
     false},
    // Sections.
    {"SectionWithMoreBytesThanTheFile", [](TImage& image) { ++image.sections[0].SizeOfRawData; }, false},
    {"SectionBehindTheEnd", [](TImage& image) { image.sections[0].PointerToRawData = 100000; }, false},
    {"SectionWithoutBytesOfAnySize", [](TImage& image) { image.sections[1].SizeOfRawData = 100000; }, true},
    {"SectionInTheHeaders",
     [](TImage& image) {
         image.sections[0].VirtualAddress = TImage::kNamesAt - 1;
         image.Exports().VirtualAddress = TImage::kNamesAt - 1;
     },
     false},
    {"SectionsInDisorder", [](TImage& image) { std::swap(image.sections[0], image.sections[1]); }, false},
    {"SectionsThatOverlap", [](TImage& image) { ++image.sections[0].Misc.VirtualSize; }, false},
    {"SectionUpToTheEndOfTheImage", [](TImage& image) { --image.headers.OptionalHeader.SizeOfImage; }, false},
    {"SectionWithoutEnd", [](TImage& image) { image.sections[1].Misc.VirtualSize = 0xFFFFFFFF; }, false},
    // The image.
    {"BaseInsideAPage", [](TImage& image) { image.headers.OptionalHeader.ImageBase += 0x1000; }, false},
    {"EntryAtTheLastByte", [](TImage& image) { image.headers.OptionalHeader.AddressOfEntryPoint = 0x2FFF; },
     true},
    {"EntryBehindTheImage", [](TImage& image) { image.headers.OptionalHeader.AddressOfEntryPoint = 0x3000; },
     false},
    {"DirectoryUpToTheEnd",
     [](TImage& image) {
         image.headers.OptionalHeader.DataDirectory[5] = {0x2000, 0x1000};
     },
     true},
    {"DirectoryBeyondTheEnd",
     [](TImage& image) {
         image.headers.OptionalHeader.DataDirectory[5] = {0x2000, 0x1001};
     },
     false},
    {"DirectoryBehindTheEnd",
     [](TImage& image) {
         image.headers.OptionalHeader.DataDirectory[5] = {0x3001, 0};
     },
     false},
    // Names.
    {"NoExports", [](TImage& image) { image.Exports() = {}; }, false},
    {"ExportsBeforeTheSections",
     [](TImage& image) { image.Exports().VirtualAddress = TImage::kNamesAddress - 1; }, false},
    {"ExportsInASectionWithoutBytes", [](TImage& image) { image.Exports().VirtualAddress = 0x2000; }, false},
    {"ExportsBehindTheBytesOfTheirSection",
     [](TImage& image) { image.Exports().VirtualAddress = TImage::kNamesAddress + 47; }, false},
    {"ExportsLongerThanTheirSection", [](TImage& image) { ++image.Exports().Size; }, false},
    {"ExportsInTheMiddle",
     [](TImage& image) {
         image.names.insert(0, "directory");
         image.sections[0].SizeOfRawData += 9;
         image.Exports().VirtualAddress += 9;
     },
     true},
    {"ExportsInTheSecondSection",
     [](TImage& image) {
         image.sections[1].PointerToRawData = std::exchange(image.sections[0].PointerToRawData, 0U);
         image.sections[1].SizeOfRawData = image.sections[0].SizeOfRawData;
         image.Exports().VirtualAddress = 0x2000;
     },
     true},
    {"NoInitEntry", [](TImage& image) { image.names[2] = 'X'; }, false},
    {"NoCloseEntry", [](TImage& image) { image.names[30] = 'X'; }, false},
    {"LastNameWithoutItsZero", [](TImage& image) { --image.Exports().Size; }, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, PluginImage, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(PluginImageFile, FilesOfEveryShorterLengthAreRefused) {
    const std::string bytes = TImage().GetBytes();
    // Not each: Wine takes long to write a file.
    for (std::size_t size = 0; size < bytes.size(); size += 7)
        EXPECT_FALSE(IsPlugin(bytes.substr(0, size))) << size;
    EXPECT_TRUE(IsPlugin(bytes));
}

TEST(PluginImageFile, MissingFileIsNone) {
    const CTemporaryFolder folder;
    EXPECT_FALSE(CImageFile(ToVorlund(folder.GetPath() / "missing").c_str()).IsPlugin());
    EXPECT_FALSE(CImageFile(ToVorlund(folder.GetPath()).c_str()).IsPlugin());
}

TEST(PluginImageBounds, NamesAreLookedForInABoundedPart) {
    // The file is as long as it says, and holds next to nothing.
    constexpr DWORD kHole = DWORD{1} << 30;
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    const wstring path = ToVorlund(file);
    for (const DWORD claimed : {DWORD{1} << 20, kHole}) {
        TImage image;
        image.sections[0].SizeOfRawData += kHole;
        image.sections[0].Misc.VirtualSize += kHole;
        image.sections[1].VirtualAddress += kHole;
        image.headers.OptionalHeader.SizeOfImage += kHole;
        image.Exports().Size = claimed;
        WriteFile(file, image.GetBytes());
        fs::resize_file(file, image.GetBytes().size() + kHole);
        const CMemoryWatch watch;
        EXPECT_EQ(CImageFile(path.c_str()).IsPlugin(), claimed < kHole) << claimed;
        EXPECT_LT(watch.GetPeakBytes(), std::size_t{4} << 20);
    }
}

TEST(PluginImageBounds, ManySectionsCostLittle) {
    TImage image;
    image.headers.FileHeader.NumberOfSections = 0xFFFF;
    image.sections.resize(0xFFFF, image.sections[1]);
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    WriteFile(file, image.GetBytes());
    const wstring path = ToVorlund(file);
    const CMemoryWatch watch;
    EXPECT_FALSE(CImageFile(path.c_str()).IsPlugin());
    EXPECT_LT(watch.GetPeakBytes(), std::size_t{4} << 20);
}

// The record by which a plug-in tells what it is, and the libraries that it needs.

/// An image with a third section, the one of the record or of the imports.
struct TLongImage : TImage {
    static constexpr DWORD kThirdAddress = 0x3000;

    TLongImage(const char* name, std::string bytes) : third(std::move(bytes)) {
        headers.FileHeader.NumberOfSections = 3;
        headers.OptionalHeader.SizeOfImage = 0x4000;
        sections.resize(3);
        std::memcpy(sections[2].Name, name,
                    std::min<std::size_t>(std::strlen(name), sizeof sections[2].Name));
        sections[2].VirtualAddress = kThirdAddress;
        sections[2].Misc.VirtualSize = 0x1000;
        sections[2].PointerToRawData = static_cast<DWORD>(kNamesAt + names.size());
        sections[2].SizeOfRawData = static_cast<DWORD>(third.size());
    }
    std::string GetBytes() const { return TImage::GetBytes() + third; }

    std::string third;
};

TLongImage ImageWithRecord() {
    const TPluginInfoRecord record = MakePluginInfo("name", "1.0", "MIT");
    return {".vrlinfo", std::string(reinterpret_cast<const char*>(&record), sizeof record)};
}

std::optional<TPluginInfoRecord> ReadInfo(const std::string& bytes) {
    const CTemporaryFolder folder;
    WriteFile(folder.GetPath() / "image", bytes);
    return CImageFile(ToVorlund(folder.GetPath() / "image").c_str()).ReadInfo();
}

TEST(PluginImageSections, RecordIsReadFromItsSection) {
    TLongImage image = ImageWithRecord();
    ASSERT_TRUE(ReadInfo(image.GetBytes()));
    EXPECT_STREQ(ReadInfo(image.GetBytes())->name, "name");
    EXPECT_TRUE(IsPlugin(image.GetBytes()));
    const struct {
        const char* name;
        std::function<void(TLongImage&)> change;
    } rows[] = {
        {"another name", [](TLongImage& it) { it.sections[2].Name[7] = 'x'; }},
        {"too short", [](TLongImage& it) { --it.sections[2].SizeOfRawData; }},
        {"behind the end", [](TLongImage& it) { it.sections[2].PointerToRawData = 0xFFFFFFFF; }},
        {"beyond the end", [](TLongImage& it) { ++it.sections[2].PointerToRawData; }},
        {"not in the file", [](TLongImage& it) { it.sections[2].PointerToRawData = 0; }},
        {"more sections than bytes", [](TLongImage& it) { it.headers.FileHeader.NumberOfSections = 0xFFFF; }},
        {"other machine", [](TLongImage& it) { ++it.headers.FileHeader.Machine; }},
        {"headers before the file", [](TLongImage& it) { it.dos.e_lfanew = -1; }},
    };
    for (const auto& row : rows) {
        TLongImage changed = ImageWithRecord();
        row.change(changed);
        EXPECT_FALSE(ReadInfo(changed.GetBytes())) << row.name;
    }
}

TEST(PluginImageSections, EveryTurnedByteAndEveryShorterFileIsHarmless) {
    const std::string bytes = ImageWithRecord().GetBytes();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(~damaged[i]);
        if (const auto info = ReadInfo(damaged)) {
            EXPECT_LT(std::string(info->licence).size(), sizeof info->licence);
        }
        EXPECT_FALSE(ReadInfo(bytes.substr(0, i))) << i;
    }
}

std::vector<std::string> ReadNeeded(const std::string& bytes) {
    const CTemporaryFolder folder;
    WriteFile(folder.GetPath() / "image", bytes);
    return CImageFile(ToVorlund(folder.GetPath() / "image").c_str()).ReadNeeded();
}

/// Imports of `count` libraries, all of the name at the end of the section.
TLongImage ImageWithImports(std::size_t count, const std::string& name, bool hasEnd = true) {
    std::vector<IMAGE_IMPORT_DESCRIPTOR> libraries(count + (hasEnd ? 1 : 0));
    const std::size_t size = libraries.size() * sizeof libraries[0];
    for (std::size_t i = 0; i < count; ++i)
        libraries[i].Name = static_cast<DWORD>(TLongImage::kThirdAddress + size);
    std::string bytes(reinterpret_cast<const char*>(libraries.data()), size);
    TLongImage image(".idata", bytes + name);
    image.headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT] = {TLongImage::kThirdAddress,
                                                                                static_cast<DWORD>(size)};
    return image;
}

TEST(PluginImageImports, NamesOfLibrariesAreRead) {
    using TNames = std::vector<std::string>;
    const std::string name("library.dll\0", 12);
    EXPECT_EQ(ReadNeeded(ImageWithImports(2, name).GetBytes()), (TNames{"library.dll", "library.dll"}));
    EXPECT_EQ(ReadNeeded(ImageWithImports(0, name).GetBytes()), TNames());
    EXPECT_EQ(ReadNeeded(ImageWithImports(1, name, false).GetBytes()), TNames{"library.dll"});
    EXPECT_EQ(ReadNeeded(TImage().GetBytes()), TNames());
    // Many, a name without an end, and one that is too long.
    EXPECT_EQ(ReadNeeded(ImageWithImports(1000, name).GetBytes()).size(), 256U);
    EXPECT_EQ(ReadNeeded(ImageWithImports(1, "library.dll").GetBytes()), TNames());
    EXPECT_EQ(ReadNeeded(ImageWithImports(1, std::string(1000, 'x') + '\0').GetBytes()), TNames());
    TLongImage image = ImageWithImports(1, name);
    image.headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress = 0xFFFFFFF0;
    EXPECT_EQ(ReadNeeded(image.GetBytes()), TNames());
}

} // namespace
} // namespace vorlund::test
