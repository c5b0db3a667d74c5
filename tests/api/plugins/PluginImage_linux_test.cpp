// What the look at an ELF file lets pass: images made field by field, of which none is ever loaded.
#include "api/plugins/PluginImages.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <link.h>

extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace vorlund::test {
namespace {

using TWord = decltype(ElfW(Phdr)::p_filesz);

/// An image with the parts that the look knows. Rows change them before they are written.
struct TImage {
    ElfW(Ehdr) header = {};
    /// Mapped and read only, mapped and writable, the dynamic entries, a note, the stack, thread-local
    /// memory.
    std::vector<ElfW(Phdr)> segments;
    std::vector<ElfW(Dyn)> entries;
    std::string names{"\0?VrlInitPlugin\0?VrlClosePlugin\0", 32};
    /// Behind the names: what the writable segment and the thread-local memory take from the file.
    std::string data = std::string(64, 'd');
    /// Where the parts lie in the file.
    TWord entriesAt = 0;
    TWord namesAt = 0;
    TWord dataAt = 0;

    TImage() : segments(6), entries(4) {
        header = __ehdr_start;
        header.e_type = ET_DYN;
        header.e_phoff = sizeof(header);
        header.e_phnum = static_cast<ElfW(Half)>(segments.size());
        entriesAt = static_cast<TWord>(sizeof(header) + segments.size() * sizeof(segments[0]));
        namesAt = static_cast<TWord>(entriesAt + entries.size() * sizeof(entries[0]));
        dataAt = static_cast<TWord>(namesAt + names.size());
        segments[0] = Segment(PT_LOAD, PF_R | PF_X, 0, 0, dataAt);
        segments[1] = Segment(PT_LOAD, PF_R | PF_W, dataAt, kDataAddress, 64);
        segments[1].p_memsz = 256;
        segments[2] = Segment(PT_DYNAMIC, PF_R, entriesAt, entriesAt, namesAt - entriesAt);
        segments[3] = Segment(PT_NOTE, PF_R, 32, 32, 16);
        segments[4] = Segment(PT_GNU_STACK, PF_R | PF_W, 0, 0, 0);
        segments[5] = Segment(PT_TLS, PF_R, dataAt, kDataAddress, 8);
        entries[0] = Entry(DT_STRTAB, namesAt);
        entries[1] = Entry(DT_STRSZ, static_cast<TWord>(names.size()));
        entries[2] = Entry(DT_SONAME, 1);
        entries[3] = Entry(DT_NULL, 0);
    }

    /// Where the writable segment lies in memory; in the file it lies elsewhere.
    static constexpr TWord kDataAddress = 0x4000;

    static ElfW(Phdr) Segment(ElfW(Word) type, ElfW(Word) flags, TWord offset, TWord address, TWord size) {
        ElfW(Phdr) segment = {};
        segment.p_type = type;
        segment.p_flags = flags;
        segment.p_offset = offset;
        segment.p_vaddr = address;
        segment.p_filesz = size;
        segment.p_memsz = size;
        segment.p_align = 1;
        return segment;
    }
    static ElfW(Dyn) Entry(decltype(ElfW(Dyn)::d_tag) tag, TWord value) {
        ElfW(Dyn) entry = {};
        entry.d_tag = tag;
        entry.d_un.d_val = value;
        return entry;
    }

    std::string GetBytes() const {
        std::string bytes(reinterpret_cast<const char*>(&header), sizeof(header));
        bytes.append(reinterpret_cast<const char*>(segments.data()), segments.size() * sizeof(segments[0]));
        bytes.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(entries[0]));
        return bytes + names + data;
    }
    /// Moves the names to the beginning of the writable segment.
    void MoveNamesToData() {
        data.replace(0, names.size(), names);
        names.assign(names.size(), 'n');
        entries[0].d_un.d_ptr = kDataAddress;
    }
};

using TRow = TImageRow<TImage>;

class PluginImage : public testing::TestWithParam<TRow> {};

TEST_P(PluginImage, IsLookedAt) {
    TImage image;
    GetParam().change(image);
    EXPECT_EQ(IsPlugin(image.GetBytes()), GetParam().isPlugin);
}

constexpr TWord kHighest = ~TWord{0};

const TRow kRows[] = {
    {"Unchanged", [](TImage&) {}, true},
    {"TableAlone",
     [](TImage& image) {
         image.names.replace(1, 18, std::string("vorlund_plugin_v1", 18));
         image.names[19] = 'x';
     },
     false},
    {"FunctionOfATableAlone",
     [](TImage& image) {
         image.names.replace(1, 22, std::string("vorlund_get_plugin_v1", 22));
         image.names[23] = 'x';
     },
     false},
    {"TypeOfAProgram", [](TImage& image) { image.header.e_type = ET_EXEC; }, false},
    {"OtherMachine", [](TImage& image) { ++image.header.e_machine; }, false},
    {"OtherVersion", [](TImage& image) { ++image.header.e_version; }, false},
    {"ShorterSegmentRecords", [](TImage& image) { --image.header.e_phentsize; }, false},
    {"LongerSegmentRecords", [](TImage& image) { ++image.header.e_phentsize; }, false},
    {"NoSegments", [](TImage& image) { image.header.e_phnum = 0; }, false},
    {"SegmentRecordsBehindTheEnd", [](TImage& image) { image.header.e_phoff = 100000; }, false},
    {"MoreSegmentRecordsThanBytes", [](TImage& image) { image.header.e_phnum = 0xFFFF; }, false},
    // Mapped segments.
    {"ReadOnlyWithMoreMemory", [](TImage& image) { ++image.segments[0].p_memsz; }, false},
    {"ReadOnlyWithLessMemory", [](TImage& image) { --image.segments[0].p_memsz; }, false},
    {"WritableWithAsMuchMemory", [](TImage& image) { image.segments[1].p_memsz = 64; }, true},
    {"WritableWithLessMemory", [](TImage& image) { image.segments[1].p_memsz = 63; }, false},
    {"AllFlags", [](TImage& image) { image.segments[0].p_flags = PF_R | PF_W | PF_X; }, true},
    {"UnknownFlag", [](TImage& image) { image.segments[0].p_flags |= 8; }, false},
    {"SecondRightBehindTheFirst",
     [](TImage& image) {
         image.segments[1].p_vaddr = image.dataAt;
         image.segments[5].p_vaddr = image.dataAt;
     },
     true},
    {"SecondOverTheFirst",
     [](TImage& image) {
         image.segments[1].p_vaddr = image.dataAt - 1;
         image.segments[5].p_vaddr = image.dataAt - 1;
     },
     false},
    {"SecondBeforeTheFirst", [](TImage& image) { std::swap(image.segments[0], image.segments[1]); }, false},
    {"ThirdRightBehindTheMemoryOfTheSecond",
     [](TImage& image) {
         image.segments[4] = TImage::Segment(PT_LOAD, PF_R, 0, TImage::kDataAddress + 256, 16);
     },
     true},
    {"ThirdOverTheMemoryOfTheSecond",
     [](TImage& image) {
         image.segments[4] = TImage::Segment(PT_LOAD, PF_R, 0, TImage::kDataAddress + 255, 16);
     },
     false},
    {"UpToTheEndOfAllMemory",
     [](TImage& image) {
         image.segments[1].p_vaddr = kHighest - 256;
         image.segments[5].p_vaddr = kHighest - 256;
     },
     true},
    {"BeyondTheEndOfAllMemory",
     [](TImage& image) {
         image.segments[1].p_vaddr = kHighest - 255;
         image.segments[5].p_vaddr = kHighest - 255;
     },
     false},
    {"EndsWithTheFile", [](TImage& image) { image.data.resize(64); }, true},
    {"EndsBehindTheFile", [](TImage& image) { image.data.resize(63); }, false},
    {"OffsetBehindTheFile", [](TImage& image) { image.segments[1].p_offset = kHighest - 8; }, false},
    // Parts of mapped segments.
    {"PartFromTheBeginning",
     [](TImage& image) { image.segments[3] = TImage::Segment(PT_NOTE, PF_R, 0, 0, 16); }, true},
    {"PartBeforeEverySegment",
     [](TImage& image) {
         image.segments[0].p_offset = 16;
         image.segments[0].p_vaddr = 16;
         image.segments[0].p_filesz -= 16;
         image.segments[0].p_memsz -= 16;
         image.segments[3] = TImage::Segment(PT_NOTE, PF_R, 15, 15, 16);
     },
     false},
    {"PartUpToTheEnd",
     [](TImage& image) {
         image.segments[3] = TImage::Segment(PT_NOTE, PF_R, image.dataAt - 16, image.dataAt - 16, 16);
     },
     true},
    {"PartBeyondTheEnd",
     [](TImage& image) {
         image.segments[3] = TImage::Segment(PT_NOTE, PF_R, image.dataAt - 16, image.dataAt - 16, 17);
     },
     false},
    {"PartBehindTheBytesOfItsMemory",
     [](TImage& image) {
         // In the memory of the first segment, had it more bytes.
         image.segments[3] = TImage::Segment(PT_NOTE, PF_R, image.dataAt + 1, image.dataAt + 1, 1);
         image.segments[3].p_memsz = 0;
     },
     false},
    {"PartAtAnotherAddress", [](TImage& image) { ++image.segments[3].p_vaddr; }, false},
    {"PartAtALowerAddress", [](TImage& image) { --image.segments[3].p_vaddr; }, false},
    {"PartOfTheSecond",
     [](TImage& image) {
         image.segments[3] = TImage::Segment(PT_NOTE, PF_R, image.dataAt + 8, TImage::kDataAddress + 8, 56);
     },
     true},
    {"PartOfNothing",
     [](TImage& image) {
         image.segments[4] = TImage::Segment(PT_NOTE, PF_R, 0, TImage::kDataAddress * 2, 1);
     },
     false},
    {"EmptyPartOfNothing",
     [](TImage& image) {
         image.segments[4] = TImage::Segment(PT_NOTE, PF_R, 0, TImage::kDataAddress * 2, 0);
     },
     true},
    {"PartOfAPart",
     [](TImage& image) {
         image.segments[4] = TImage::Segment(PT_GNU_RELRO, PF_R, 0, TImage::kDataAddress * 2, 1);
         image.segments[3] = image.segments[4];
     },
     false},
    {"MemoryUpToTheEndOfThePage",
     [](TImage& image) {
         image.segments[1].p_align = 32;
         image.segments[3] =
             TImage::Segment(PT_GNU_RELRO, PF_R, image.dataAt + 8, TImage::kDataAddress + 8, 16);
         image.segments[3].p_memsz = 256 - 8 + 32;
     },
     true},
    {"MemoryBeyondTheEndOfThePage",
     [](TImage& image) {
         image.segments[1].p_align = 32;
         image.segments[3] =
             TImage::Segment(PT_GNU_RELRO, PF_R, image.dataAt + 8, TImage::kDataAddress + 8, 16);
         image.segments[3].p_memsz = 256 - 8 + 33;
     },
     false},
    {"ThreadLocalMemoryOfAnySize", [](TImage& image) { image.segments[5].p_memsz = 1 << 20; }, true},
    // Names.
    {"NoDynamicEntries", [](TImage& image) { image.segments[2].p_type = PT_NOTE; }, false},
    {"EntriesBehindTheLast",
     [](TImage& image) {
         image.entries[2] = TImage::Entry(DT_NULL, 0);
         image.entries[3] = TImage::Entry(DT_STRSZ, 3);
     },
     true},
    {"EntriesWithoutALast", [](TImage& image) { image.entries[3] = image.entries[2]; }, true},
    {"NoNames", [](TImage& image) { image.entries[0].d_tag = DT_SONAME; }, false},
    // An address that nothing names is 0, which is where this image begins.
    {"SizeOfNamesAlone",
     [](TImage& image) {
         image.entries[0].d_tag = DT_SONAME;
         image.entries[1].d_un.d_val = image.dataAt;
     },
     true},
    {"NoSizeOfNames", [](TImage& image) { image.entries[1].d_tag = DT_SONAME; }, false},
    {"NamesUpToTheEndOfTheirSegment", [](TImage& image) { image.entries[1].d_un.d_val = image.names.size(); },
     true},
    {"NamesBeyondTheEndOfTheirSegment",
     [](TImage& image) { image.entries[1].d_un.d_val = image.names.size() + 1; }, false},
    {"NamesInTheSecond", [](TImage& image) { image.MoveNamesToData(); }, true},
    {"NamesInsideTheSecond",
     [](TImage& image) {
         image.MoveNamesToData();
         image.data = "?" + image.data;
         image.data.resize(64);
         ++image.entries[0].d_un.d_ptr;
     },
     true},
    {"NamesBeforeTheSecond",
     [](TImage& image) {
         image.MoveNamesToData();
         --image.entries[0].d_un.d_ptr;
     },
     false},
    {"NamesBehindTheBytesOfTheSecond",
     [](TImage& image) {
         image.MoveNamesToData();
         image.entries[0].d_un.d_ptr += 65;
     },
     false},
    {"NamesInAPartThatIsNotMapped",
     [](TImage& image) {
         image.segments[1].p_type = PT_NOTE;
         image.segments[1].p_filesz = 0;
         image.segments[5].p_filesz = 0;
         image.MoveNamesToData();
     },
     false},
    {"NoInitEntry", [](TImage& image) { image.names[3] = 'X'; }, false},
    {"NoCloseEntry", [](TImage& image) { image.names[20] = 'X'; }, false},
    {"LongerNameOfAnEntry",
     [](TImage& image) { image.names = std::string("?VrlInitPluginX\0?VrlClosePlugin\0", 32); }, false},
    {"LastNameWithoutItsZero", [](TImage& image) { image.entries[1].d_un.d_val = image.names.size() - 1; },
     false},
};

INSTANTIATE_TEST_SUITE_P(Rows, PluginImage, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(PluginImageFile, EveryByteThatTellsTheFormatCounts) {
    for (std::size_t i = 0; i < EI_NIDENT; ++i) {
        TImage image;
        ++image.header.e_ident[i];
        // The first seven: magic number, word size, byte order, version.
        EXPECT_EQ(IsPlugin(image.GetBytes()), i > EI_VERSION) << i;
    }
}

TEST(PluginImageFile, FilesOfEveryShorterLengthAreRefused) {
    const std::string bytes = TImage().GetBytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(IsPlugin(bytes.substr(0, size))) << size;
    EXPECT_TRUE(IsPlugin(bytes));
}

TEST(PluginImageFile, MissingFileIsNone) {
    const CTemporaryFolder folder;
    EXPECT_FALSE(CImageFile(ToVorlund(folder.GetPath() / "missing").c_str()).IsPlugin());
    EXPECT_FALSE(CImageFile(ToVorlund(folder.GetPath()).c_str()).IsPlugin());
}

// Files that claim much and hold little: behind their bytes there is nothing but a hole.

constexpr TWord kHole = TWord{1} << 30;

/// Whether a file of `bytes` and a hole of 1 GiB is taken for a plug-in; it is looked at with little memory.
bool IsPluginWithHole(const std::string& bytes) {
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    WriteFile(file, bytes);
    fs::resize_file(file, bytes.size() + kHole);
    const wstring path = ToVorlund(file);
    const CMemoryWatch watch;
    const bool isPlugin = CImageFile(path.c_str()).IsPlugin();
    EXPECT_LT(watch.GetPeakBytes(), std::size_t{4} << 20);
    return isPlugin;
}

/// An image whose first segment goes on to the end of the hole.
TImage ImageWithLongSegment() {
    TImage image;
    image.segments[0].p_filesz += kHole;
    image.segments[0].p_memsz += kHole;
    for (const std::size_t moved : {1, 5}) image.segments[moved].p_vaddr += kHole;
    return image;
}

TEST(PluginImageBounds, LongSegmentCostsNothing) {
    EXPECT_TRUE(IsPluginWithHole(ImageWithLongSegment().GetBytes()));
}

TEST(PluginImageBounds, NamesAreLookedForInABoundedPart) {
    TImage image = ImageWithLongSegment();
    image.entries[1].d_un.d_val += (TWord{1} << 20);
    EXPECT_TRUE(IsPluginWithHole(image.GetBytes()));
    image.entries[1].d_un.d_val = kHole;
    EXPECT_FALSE(IsPluginWithHole(image.GetBytes()));
}

TEST(PluginImageBounds, DynamicEntriesAreBounded) {
    TImage image = ImageWithLongSegment();
    image.segments[2].p_filesz = image.segments[2].p_memsz = kHole;
    EXPECT_FALSE(IsPluginWithHole(image.GetBytes()));
}

TEST(PluginImageBounds, SegmentsAreBounded) {
    // Each would be looked for in each.
    TImage image;
    image.header.e_phnum = 0xFFFF;
    image.segments.resize(0xFFFF, image.segments[3]);
    EXPECT_FALSE(IsPlugin(image.GetBytes()));
}

TEST(PluginImageBounds, NamesAreFoundWhereverTheyLie) {
    // Read piece by piece, so a name may lie on both sides of a border.
    for (std::size_t before = (std::size_t{64} << 10) - 48; before < (std::size_t{64} << 10) + 8; ++before) {
        TImage image;
        const TWord longer = before;
        image.names = std::string(before, 'n') + image.names;
        image.entries[1].d_un.d_val += longer;
        image.segments[0].p_filesz += longer;
        image.segments[0].p_memsz += longer;
        for (const std::size_t moved : {1, 5}) {
            image.segments[moved].p_offset += longer;
            image.segments[moved].p_vaddr += longer;
        }
        EXPECT_TRUE(IsPlugin(image.GetBytes())) << before;
        image.names[before + 5] = 'X';
        EXPECT_FALSE(IsPlugin(image.GetBytes())) << before;
    }
}

TEST(PluginImageFile, FilesMayShrinkWhileTheyAreLookedAt) {
    const TImage image;
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    // In the order in which the parts are read; behind the names there is nothing that is read.
    for (const TWord size : {TWord{0}, image.header.e_phoff, image.entriesAt, image.namesAt}) {
        WriteFile(file, image.GetBytes());
        const CImageFile opened(ToVorlund(file).c_str());
        fs::resize_file(file, size);
        EXPECT_FALSE(opened.IsPlugin()) << size;
    }
    WriteFile(file, image.GetBytes());
    const CImageFile opened(ToVorlund(file).c_str());
    fs::resize_file(file, image.dataAt);
    EXPECT_TRUE(opened.IsPlugin());
}

TEST(PluginImageFile, FilesAreClosed) {
    const auto count = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = count();
    EXPECT_TRUE(IsPlugin(TImage().GetBytes()));
    EXPECT_EQ(count(), before);
}

} // namespace
} // namespace vorlund::test
