// ELF images. The format: System V Application Binary Interface (gABI), chapters 4 "Object Files" and 5
// "Program Loading and Dynamic Linking".
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/api/plugins/PluginEntries.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <link.h>

/// The header of the image that this code is part of; the linker defines it.
extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace vorlund {
namespace {

using THeader = ElfW(Ehdr);
using TSegment = ElfW(Phdr);
using TDynamic = ElfW(Dyn);
using TSegments = std::vector<TSegment>;

/// Libraries have about ten segments and some thirty dynamic entries, and one more for each library that they
/// need. Each segment may be compared with each.
constexpr std::size_t kMaxSegments = 1024;
constexpr std::size_t kMaxDynamicEntries = 65536;

bool IsForThisProcess(const THeader& header) {
    const THeader& own = __ehdr_start;
    // Magic number, word size, byte order and version of the format.
    return std::memcmp(header.e_ident, own.e_ident, EI_VERSION + 1) == 0 && header.e_type == ET_DYN &&
           header.e_machine == own.e_machine && header.e_version == own.e_version &&
           header.e_phentsize == sizeof(TSegment);
}

/// Whether the loader may map the segment after one that ends at `end`: it maps each at the address that the
/// file gives, over whatever is there.
bool IsMappable(const TSegment& segment, std::uint64_t end) {
    constexpr unsigned int kFlags = PF_R | PF_W | PF_X;
    // Only what can be written has more memory than it has bytes in the file.
    const bool hasItsBytes =
        segment.p_flags & PF_W ? segment.p_filesz <= segment.p_memsz : segment.p_filesz == segment.p_memsz;
    return hasItsBytes && (segment.p_flags & ~kFlags) == 0 && segment.p_vaddr >= end &&
           segment.p_memsz <= UINTPTR_MAX - segment.p_vaddr;
}

/// Whether `segment` is a part of the loaded segment `whole`, in the file and in memory.
bool IsPartOf(const TSegment& segment, const TSegment& whole) {
    if (whole.p_type != PT_LOAD || segment.p_offset < whole.p_offset) return false;
    const std::uint64_t distance = segment.p_offset - whole.p_offset;
    if (distance > whole.p_filesz || segment.p_filesz > whole.p_filesz - distance ||
        segment.p_vaddr != whole.p_vaddr + distance)
        return false;
    // Thread-local memory is not in the image; a range that is made read-only ends with a page.
    const std::uint64_t room = whole.p_memsz - distance + whole.p_align;
    return segment.p_type == PT_TLS || segment.p_memsz <= room;
}

/// Whether the mapped segments follow each other, and what else the loader looks at is a part of them.
bool AreInOrder(const TSegments& segments) {
    std::uint64_t end = 0;
    return std::all_of(segments.begin(), segments.end(), [&](const TSegment& segment) {
        if (segment.p_type == PT_LOAD) {
            if (!IsMappable(segment, end)) return false;
            end = segment.p_vaddr + segment.p_memsz;
            return true;
        }
        return segment.p_filesz == 0 ||
               std::any_of(segments.begin(), segments.end(),
                           [&](const TSegment& whole) { return IsPartOf(segment, whole); });
    });
}

/// A part of the file.
struct TRange {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// The names of the dynamic symbols; an empty range when the file does not tell where they are.
TRange FindNames(const TSegments& segments, const std::vector<TDynamic>& entries) {
    std::uint64_t address = 0;
    TRange names;
    for (const TDynamic& entry : entries) {
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_STRTAB) address = entry.d_un.d_ptr;
        if (entry.d_tag == DT_STRSZ) names.size = entry.d_un.d_val;
    }
    for (const TSegment& segment : segments) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
        const std::uint64_t distance = address - segment.p_vaddr;
        if (distance > segment.p_filesz || names.size > segment.p_filesz - distance) continue;
        names.offset = segment.p_offset + distance;
        return names;
    }
    return {};
}

} // namespace

bool CImageFile::IsPlugin() const {
    THeader header;
    if (!Read(0, &header, sizeof(header)) || !IsForThisProcess(header) || header.e_phnum > kMaxSegments)
        return false;
    TSegments segments(header.e_phnum);
    if (!Read(header.e_phoff, segments.data(), segments.size() * sizeof(TSegment))) return false;
    const bool isComplete = std::all_of(segments.begin(), segments.end(), [this](const TSegment& segment) {
        return Has(segment.p_offset, segment.p_filesz);
    });
    if (!isComplete || !AreInOrder(segments)) return false;

    const auto dynamic = std::find_if(segments.begin(), segments.end(),
                                      [](const TSegment& segment) { return segment.p_type == PT_DYNAMIC; });
    if (dynamic == segments.end() || dynamic->p_filesz / sizeof(TDynamic) > kMaxDynamicEntries) return false;
    std::vector<TDynamic> entries(dynamic->p_filesz / sizeof(TDynamic));
    if (!Read(dynamic->p_offset, entries.data(), entries.size() * sizeof(TDynamic))) return false;
    const TRange names = FindNames(segments, entries);
    return HasNames(names.offset, names.size, kInitEntryName.symbol, kCloseEntryName.symbol);
}

} // namespace vorlund
