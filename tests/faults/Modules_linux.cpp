// The import tables of ELF modules: the places where the loader puts the addresses of functions of other
// modules.
#include "faults/Hooks.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <unordered_map>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vorlund::faults {
namespace {

#if defined(__x86_64__)
constexpr unsigned int kJumpSlot = R_X86_64_JUMP_SLOT;
constexpr unsigned int kGlobalData = R_X86_64_GLOB_DAT;
#elif defined(__i386__)
constexpr unsigned int kJumpSlot = R_386_JMP_SLOT;
constexpr unsigned int kGlobalData = R_386_GLOB_DAT;
#elif defined(__aarch64__)
constexpr unsigned int kJumpSlot = R_AARCH64_JUMP_SLOT;
constexpr unsigned int kGlobalData = R_AARCH64_GLOB_DAT;
#endif

#if __ELF_NATIVE_CLASS == 64
unsigned int SymbolOf(ElfW(Xword) info) {
    return static_cast<unsigned int>(ELF64_R_SYM(info));
}
unsigned int TypeOf(ElfW(Xword) info) {
    return static_cast<unsigned int>(ELF64_R_TYPE(info));
}
#else
unsigned int SymbolOf(ElfW(Word) info) {
    return ELF32_R_SYM(info);
}
unsigned int TypeOf(ElfW(Word) info) {
    return ELF32_R_TYPE(info);
}
#endif

/// One place in an import table. A module may take a function of its own by this way.
struct TImport {
    const char* name;
    void** place;
    bool isForeign;
};
using TOnImport = std::function<void(const TImport&)>;

class CModule {
public:
    explicit CModule(const dl_phdr_info& info) : base_(info.dlpi_addr) {
        for (int i = 0; i < info.dlpi_phnum; ++i)
            if (info.dlpi_phdr[i].p_type == PT_DYNAMIC) Read(base_ + info.dlpi_phdr[i].p_vaddr);
    }

    void ForEachImport(const TOnImport& onImport) const {
        if (!symbols_) return;
        Walk<ElfW(Rela)>(relocations_, relocationsSize_, onImport);
        Walk<ElfW(Rel)>(plainRelocations_, plainRelocationsSize_, onImport);
        if (jumpKind_ == DT_RELA) Walk<ElfW(Rela)>(jumps_, jumpsSize_, onImport);
        if (jumpKind_ == DT_REL) Walk<ElfW(Rel)>(jumps_, jumpsSize_, onImport);
    }

private:
    void Read(ElfW(Addr) address) {
        for (auto* entry = reinterpret_cast<const ElfW(Dyn)*>(address); entry->d_tag != DT_NULL; ++entry) {
            // The loader has made these whole addresses.
            const ElfW(Addr) value = entry->d_un.d_ptr;
            switch (entry->d_tag) {
            case DT_SYMTAB:
                symbols_ = reinterpret_cast<const ElfW(Sym)*>(value);
                break;
            case DT_STRTAB:
                names_ = reinterpret_cast<const char*>(value);
                break;
            case DT_RELA:
                relocations_ = value;
                break;
            case DT_RELASZ:
                relocationsSize_ = entry->d_un.d_val;
                break;
            case DT_REL:
                plainRelocations_ = value;
                break;
            case DT_RELSZ:
                plainRelocationsSize_ = entry->d_un.d_val;
                break;
            case DT_JMPREL:
                jumps_ = value;
                break;
            case DT_PLTRELSZ:
                jumpsSize_ = entry->d_un.d_val;
                break;
            case DT_PLTREL:
                jumpKind_ = entry->d_un.d_val;
                break;
            default:
                break;
            }
        }
    }

    template <class TRelocation>
    void Walk(ElfW(Addr) address, std::size_t size, const TOnImport& onImport) const {
        const auto* const first = reinterpret_cast<const TRelocation*>(address);
        for (const auto* entry = first; entry < first + size / sizeof(TRelocation); ++entry) {
            const unsigned int type = TypeOf(entry->r_info);
            if (type != kJumpSlot && type != kGlobalData) continue;
            const ElfW(Sym)& symbol = symbols_[SymbolOf(entry->r_info)];
            onImport({names_ + symbol.st_name, reinterpret_cast<void**>(base_ + entry->r_offset),
                      symbol.st_shndx == SHN_UNDEF});
        }
    }

    ElfW(Addr) base_;
    const ElfW(Sym) * symbols_ = nullptr;
    const char* names_ = nullptr;
    ElfW(Addr) relocations_ = 0;
    ElfW(Addr) plainRelocations_ = 0;
    ElfW(Addr) jumps_ = 0;
    std::size_t relocationsSize_ = 0;
    std::size_t plainRelocationsSize_ = 0;
    std::size_t jumpsSize_ = 0;
    ElfW(Xword) jumpKind_ = 0;
};

using THooksByName = std::unordered_map<std::string_view, const THook*>;

THooksByName Index(const std::vector<THook>& hooks) {
    THooksByName byName;
    for (const THook& hook : hooks) {
        // Not by the table that is changed: under a sanitizer this is the sanitizer's function.
        if (!*hook.real) *hook.real = dlsym(RTLD_DEFAULT, hook.name);
        if (*hook.real) byName.emplace(hook.name, &hook);
    }
    return byName;
}

void MakeWritable(void** place) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(place) & ~(page - 1);
    // The place is aligned, so it lies in one page.
    mprotect(reinterpret_cast<void*>(start), page, PROT_READ | PROT_WRITE);
}

void Patch(const dl_phdr_info& info, const THooksByName& hooks) {
    CModule(info).ForEachImport([&](const TImport& import) {
        const auto found = hooks.find(import.name);
        if (found == hooks.end() || *import.place == found->second->replacement) return;
        MakeWritable(import.place);
        *import.place = found->second->replacement;
    });
}

bool IsLibrary(std::string_view path) {
    return path.find("/libvorlund.so") != path.npos;
}

/// The library, its plug-ins and what else lies beside this program, and the standard library.
bool IsCaught(std::string_view path) {
    static const std::string folder =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + '/';
    return path.find("/libstdc++.so") != path.npos || path.rfind(folder, 0) == 0;
}

template <class TAct> void ForEachModule(TAct act) {
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* user) {
            (*static_cast<TAct*>(user))(*info);
            return 0;
        },
        &act);
}

} // namespace

void PatchModules() {
    static const std::vector<THook> own = GetOwnHooks();
    static const THooksByName allHooks = Index(GetHooks());
    static const THooksByName ownHooks = Index(own);
    static unsigned int startModules = 0;
    unsigned int index = 0;
    ForEachModule([&](const dl_phdr_info& info) {
        // What is there from the start stays, and comes first.
        if (++index <= startModules) return;
        if (index == 1) {
            Patch(info, ownHooks);
        } else if (IsCaught(info.dlpi_name)) {
            Patch(info, allHooks);
        }
    });
    if (startModules == 0) startModules = index;
}

std::vector<std::string> GetLibraryImports() {
    std::vector<std::string> imports;
    ForEachModule([&](const dl_phdr_info& info) {
        if (!IsLibrary(info.dlpi_name)) return;
        CModule(info).ForEachImport([&](const TImport& import) {
            if (import.isForeign) imports.emplace_back(import.name);
        });
    });
    return imports;
}

std::string DescribeAddress(const void* address) {
    Dl_info info;
    if (!address || dladdr(address, &info) == 0 || !info.dli_fname) return "nowhere";
    const std::string path = info.dli_fname;
    char offset[32];
    std::snprintf(offset, sizeof offset, "+0x%zx",
                  static_cast<std::size_t>(static_cast<const char*>(address) -
                                           static_cast<const char*>(info.dli_fbase)));
    return path.substr(path.rfind('/') + 1) + offset;
}

} // namespace vorlund::faults
