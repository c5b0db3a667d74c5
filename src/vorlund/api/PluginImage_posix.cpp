// ELF images. The format: "Tool Interface Standard (TIS) Executable and Linking Format (ELF) Specification",
// version 1.2, and the System V ABI's chapters on program loading.
#include "vorlund/api/PluginImage.h"

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

bool IsForThisProcess(const THeader& header) {
    const THeader& own = __ehdr_start;
    // Magic number, word size, byte order and version of the format.
    return std::memcmp(header.e_ident, own.e_ident, EI_VERSION + 1) == 0 && header.e_type == ET_DYN &&
           header.e_machine == own.e_machine && header.e_version == own.e_version &&
           header.e_phentsize == sizeof(TSegment);
}

/// Whether the mapped ranges follow each other, and what else the loader looks at lies in them: it puts each
/// where it says, over whatever is there.
bool AreInOrder(const std::vector<TSegment>& segments) {
    std::uint64_t end = 0;
    bool isLoaded = false;
    for (const TSegment& segment : segments) {
        if (segment.p_type != PT_LOAD) continue;
        const std::uint64_t begin = segment.p_vaddr;
        if (segment.p_memsz < segment.p_filesz || begin < end || segment.p_memsz > UINTPTR_MAX - begin)
            return false;
        end = begin + segment.p_memsz;
        isLoaded = true;
    }
    return isLoaded && std::all_of(segments.begin(), segments.end(), [end](const TSegment& segment) {
               return segment.p_filesz == 0 ||
                      (segment.p_vaddr <= end && segment.p_filesz <= end - segment.p_vaddr);
           });
}

} // namespace

bool CImageFile::IsWhole() const {
    THeader header;
    if (!Read(0, &header, sizeof(header)) || !IsForThisProcess(header)) return false;
    std::vector<TSegment> segments(header.e_phnum);
    if (!Read(header.e_phoff, segments.data(), segments.size() * sizeof(TSegment))) return false;
    const bool isComplete = std::all_of(segments.begin(), segments.end(), [this](const TSegment& segment) {
        return Has(segment.p_offset, segment.p_filesz);
    });
    const bool isLinked = std::any_of(segments.begin(), segments.end(), [](const TSegment& segment) {
        return segment.p_type == PT_DYNAMIC && segment.p_filesz > 0;
    });
    return isComplete && isLinked && AreInOrder(segments);
}

} // namespace vorlund
