// ELF images. The format: System V Application Binary Interface (gABI), chapters 4 "Object Files" and 5
// "Program Loading and Dynamic Linking".
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/api/plugins/PluginEntries.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <link.h>

/// The header of the image that this code is part of; the linker defines it.
extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace vorlund {
namespace {

using THeader = ElfW(Ehdr);
using TSegment = ElfW(Phdr);
using TDynamic = ElfW(Dyn);
using TSection = ElfW(Shdr);
using TSegments = std::vector<TSegment>;

/// Libraries have about ten segments and some thirty dynamic entries, and one more for each library that they
/// need. Each segment may be compared with each.
constexpr std::size_t kMaxSegments = 1024;
constexpr std::size_t kMaxDynamicEntries = 65536;
/// Libraries have about thirty sections.
constexpr std::size_t kMaxSections = 1024;

bool IsElf(const THeader& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
}

/// Whether the sizes and the order of bytes of the headers are those of this process.
bool HasOwnNumbers(const THeader& header) {
    return header.e_ident[EI_CLASS] == __ehdr_start.e_ident[EI_CLASS] &&
           header.e_ident[EI_DATA] == __ehdr_start.e_ident[EI_DATA];
}

bool IsForThisProcess(const THeader& header) {
    const THeader& own = __ehdr_start;
    // Magic number, word size, byte order and version of the format.
    return std::memcmp(header.e_ident, own.e_ident, EI_VERSION + 1) == 0 && header.e_type == ET_DYN &&
           header.e_machine == own.e_machine && header.e_version == own.e_version &&
           header.e_phentsize == sizeof(TSegment);
}

/// For people.
std::string DescribeMachine(const THeader& header) {
    std::uint16_t machine = header.e_machine;
    if (header.e_ident[EI_DATA] != __ehdr_start.e_ident[EI_DATA])
        machine = static_cast<std::uint16_t>(machine << 8 | machine >> 8);
    switch (machine) {
    case EM_386:
        return "x86, 32 bits";
    case EM_X86_64:
        return header.e_ident[EI_CLASS] == ELFCLASS32 ? "x86-64, 32-bit pointers" : "x86-64";
    case EM_ARM:
        return "ARM, 32 bits";
    case EM_AARCH64:
        return "AArch64";
    case EM_RISCV:
        return "RISC-V";
    }
    return "machine " + std::to_string(machine);
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

/// The offset and the size of the names of the dynamic symbols; 0 and 0 when the file does not tell where
/// they are.
std::pair<std::uint64_t, std::uint64_t> FindNames(const TSegments& segments,
                                                  const std::vector<TDynamic>& entries) {
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    for (const TDynamic& entry : entries) {
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_STRTAB) address = entry.d_un.d_ptr;
        if (entry.d_tag == DT_STRSZ) size = entry.d_un.d_val;
    }
    for (const TSegment& segment : segments) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
        const std::uint64_t distance = address - segment.p_vaddr;
        if (distance > segment.p_filesz || size > segment.p_filesz - distance) continue;
        return {segment.p_offset + distance, size};
    }
    return {};
}

} // namespace

TImageLook CImageFile::Look() const {
    // What is shorter than the headers of every library is none.
    THeader header;
    if (!Read(0, &header, sizeof(header)) || !IsElf(header)) return {TImageKind::NoLibrary};
    if (!HasOwnNumbers(header) || header.e_machine != __ehdr_start.e_machine)
        return {TImageKind::OtherMachine, DescribeMachine(header)};
    if (!IsForThisProcess(header) || header.e_phnum > kMaxSegments) return {TImageKind::NoLibrary};
    TSegments segments(header.e_phnum);
    const std::size_t size = segments.size() * sizeof(TSegment);
    if (!Read(header.e_phoff, segments.data(), size)) return LackOfBytes({header.e_phoff, size});
    for (const TSegment& segment : segments)
        if (!Has(segment.p_offset, segment.p_filesz))
            return LackOfBytes({segment.p_offset, segment.p_filesz});
    if (!AreInOrder(segments)) return {TImageKind::NoLibrary};

    const auto dynamic = std::find_if(segments.begin(), segments.end(),
                                      [](const TSegment& segment) { return segment.p_type == PT_DYNAMIC; });
    if (dynamic == segments.end() || dynamic->p_filesz / sizeof(TDynamic) > kMaxDynamicEntries)
        return {TImageKind::NoLibrary};
    std::vector<TDynamic> entries(dynamic->p_filesz / sizeof(TDynamic));
    if (!Read(dynamic->p_offset, entries.data(), entries.size() * sizeof(TDynamic)))
        return {TImageKind::NoLibrary};
    const auto [offset, length] = FindNames(segments, entries);
    return LookForNames({offset, length}, kInitEntryName.symbol, kCloseEntryName.symbol);
}

CImageFile::TRange CImageFile::FindInfo() const {
    THeader header;
    if (!Read(0, &header, sizeof(header)) || !IsForThisProcess(header) ||
        header.e_shentsize != sizeof(TSection) || header.e_shnum > kMaxSections ||
        header.e_shstrndx >= header.e_shnum)
        return {};
    std::vector<TSection> sections(header.e_shnum);
    if (!Read(header.e_shoff, sections.data(), sections.size() * sizeof(TSection))) return {};
    const TSection& names = sections[header.e_shstrndx];
    // With its zero.
    constexpr std::size_t kNameSize = kInfoSection.size() + 1;
    for (const TSection& section : sections) {
        char name[kNameSize];
        if (section.sh_type != SHT_PROGBITS || section.sh_name > names.sh_size ||
            names.sh_size - section.sh_name < kNameSize || names.sh_offset > UINT64_MAX - section.sh_name ||
            !Read(std::uint64_t{names.sh_offset} + section.sh_name, name, kNameSize) ||
            std::string_view(name, kNameSize) != std::string_view(kInfoSection.data(), kNameSize))
            continue;
        return {section.sh_offset, section.sh_size};
    }
    return {};
}

} // namespace vorlund
