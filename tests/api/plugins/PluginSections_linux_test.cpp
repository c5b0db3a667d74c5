// How the record of a plug-in is found in an ELF file: tables of sections made field by field, which may
// claim anything.
#include "vorlund/api/plugins/PluginImage.h"

#include "data/file/TemporaryFolder.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include <link.h>

extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace vorlund::test {
namespace {

using TWord = decltype(ElfW(Shdr)::sh_size);
constexpr TWord kHighest = ~TWord{0};

/// A header, the record, the names of sections, and the table of three sections.
struct TImage {
    ElfW(Ehdr) header = __ehdr_start;
    TPluginInfoRecord record = MakePluginInfo("name", "1.0", "MIT");
    std::string names{"\0.vrlinfo\0.names\0", 17};
    std::vector<ElfW(Shdr)> sections{3};

    TImage() {
        header.e_type = ET_DYN;
        const TWord namesAt = sizeof header + sizeof record;
        header.e_shoff = namesAt + names.size();
        header.e_shentsize = sizeof(ElfW(Shdr));
        header.e_shnum = 3;
        header.e_shstrndx = 2;
        sections[1].sh_name = 1;
        sections[1].sh_type = SHT_PROGBITS;
        sections[1].sh_offset = sizeof header;
        sections[1].sh_size = sizeof record;
        sections[2].sh_name = 10;
        sections[2].sh_type = SHT_STRTAB;
        sections[2].sh_offset = namesAt;
        sections[2].sh_size = names.size();
    }

    std::string GetBytes() const {
        std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
        bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        bytes += names;
        return bytes.append(reinterpret_cast<const char*>(sections.data()),
                            sections.size() * sizeof sections[0]);
    }
};

std::optional<TPluginInfoRecord> ReadInfo(const std::string& bytes) {
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    WriteFile(file, bytes);
    const wstring path = ToVorlund(file);
    const CMemoryWatch watch;
    const auto info = CImageFile(path.c_str()).ReadInfo();
    EXPECT_LT(watch.GetPeakBytes(), std::size_t{1} << 20);
    return info;
}

struct TRow {
    const char* name;
    std::function<void(TImage&)> change;
    bool isFound;
};

class PluginSections : public testing::TestWithParam<TRow> {};

TEST_P(PluginSections, AreLookedAt) {
    TImage image;
    GetParam().change(image);
    const auto info = ReadInfo(image.GetBytes());
    ASSERT_EQ(info.has_value(), GetParam().isFound);
    if (info) {
        EXPECT_STREQ(info->name, "name");
    }
}

const TRow kRows[] = {
    {"Unchanged", [](TImage&) {}, true},
    {"NoSections", [](TImage& image) { image.header.e_shnum = 0; }, false},
    {"NoNamesOfSections", [](TImage& image) { image.header.e_shstrndx = 3; }, false},
    {"HighestNumberOfSections", [](TImage& image) { image.header.e_shnum = 0xFFFF; }, false},
    {"TableBehindTheEnd", [](TImage& image) { image.header.e_shoff = kHighest; }, false},
    {"TableBeyondTheEnd", [](TImage& image) { ++image.header.e_shoff; }, false},
    {"OtherSizeOfEntries", [](TImage& image) { ++image.header.e_shentsize; }, false},
    {"OtherMachine", [](TImage& image) { ++image.header.e_machine; }, false},
    {"NotInTheFile", [](TImage& image) { image.sections[1].sh_type = SHT_NOBITS; }, false},
    {"RecordBehindTheEnd", [](TImage& image) { image.sections[1].sh_offset = kHighest; }, false},
    {"RecordOfHighestSize", [](TImage& image) { image.sections[1].sh_size = kHighest; }, true},
    {"RecordTooShort", [](TImage& image) { --image.sections[1].sh_size; }, false},
    {"NameOfHighestOffset", [](TImage& image) { image.sections[1].sh_name = 0xFFFFFFFF; }, false},
    {"NameBehindTheNames", [](TImage& image) { image.sections[1].sh_name = 17; }, false},
    {"NameCutByTheNames", [](TImage& image) { image.sections[2].sh_size = 9; }, false},
    {"NamesBehindTheEnd", [](TImage& image) { image.sections[2].sh_offset = kHighest; }, false},
    {"NamesOfHighestSize", [](TImage& image) { image.sections[2].sh_size = kHighest; }, true},
    {"LongerName", [](TImage& image) { image.names = std::string("\0.vrlinfoX.names\0", 17); }, false},
    {"RecordLongerThanItsSection", [](TImage& image) { image.record.size = 176 + 1; }, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, PluginSections, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(PluginSectionsFile, EveryShorterFileHasNone) {
    const std::string bytes = TImage().GetBytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(ReadInfo(bytes.substr(0, size))) << size;
    EXPECT_TRUE(ReadInfo(bytes));
}

TEST(PluginSectionsFile, EveryTurnedByteIsHarmless) {
    const std::string bytes = TImage().GetBytes();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(~damaged[i]);
        // What is found is whole.
        if (const auto info = ReadInfo(damaged)) {
            EXPECT_LT(std::string(info->licence).size(), sizeof info->licence);
        }
    }
}

} // namespace
} // namespace vorlund::test
