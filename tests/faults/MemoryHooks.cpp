#include "faults/Hooks.h"

#include <cstdlib>

// How the compilers write std::size_t in names.
#if defined(__i386__)
#define FAULTS_SIZE "j"
#elif defined(_WIN32)
#define FAULTS_SIZE "y"
#else
#define FAULTS_SIZE "m"
#endif

namespace vorlund::faults {
namespace {

using TNew = void* (*)(std::size_t);
using TNewAligned = void* (*)(std::size_t, std::align_val_t);
using TDelete = void (*)(void*);
using TDeleteSized = void (*)(void*, std::size_t);
using TDeleteAligned = void (*)(void*, std::align_val_t);
using TDeleteSizedAligned = void (*)(void*, std::size_t, std::align_val_t);

/// The real function behind each name.
template <TImportName kName> void* realOf = nullptr;

template <class TFunction, TImportName kName, class... TArguments> auto CallReal(TArguments... arguments) {
    const CPause pause;
    return reinterpret_cast<TFunction>(realOf<kName>)(arguments...);
}

template <TImportName kName> THook Hook(auto* replacement) {
    return {kName.characters, reinterpret_cast<void*>(replacement), &realOf<kName>};
}

// No lambdas: the address to return to would be that of their wrapper.

template <TImportName kName> void* New(std::size_t size) {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) throw std::bad_alloc();
    void* const block = CallReal<TNew, kName>(size);
    NoteBlock(block, size, __builtin_return_address(0));
    return block;
}

template <TImportName kName> void* NewNothrow(std::size_t size, const std::nothrow_t&) noexcept {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) return nullptr;
    void* const block = CallReal<void* (*)(std::size_t, const std::nothrow_t*), kName>(size, &std::nothrow);
    NoteBlock(block, size, __builtin_return_address(0));
    return block;
}

template <TImportName kName> void* NewAligned(std::size_t size, std::align_val_t alignment) {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) throw std::bad_alloc();
    void* const block = CallReal<TNewAligned, kName>(size, alignment);
    NoteBlock(block, size, __builtin_return_address(0));
    return block;
}

/// For this program itself: neither counted nor followed.
template <TImportName kName> void* OwnNew(std::size_t size) {
    return CallReal<TNew, kName>(size);
}

template <TImportName kName, class TFunction, class... TArguments>
void Delete(void* block, TArguments... arguments) noexcept {
    ForgetBlock(block);
    CallReal<TFunction, kName>(block, arguments...);
}

template <TImportName kName> THook HookDelete() {
    return Hook<kName>(&Delete<kName, TDelete>);
}
template <TImportName kName> THook HookDeleteSized() {
    return Hook<kName>(&Delete<kName, TDeleteSized, std::size_t>);
}
template <TImportName kName> THook HookDeleteAligned() {
    return Hook<kName>(&Delete<kName, TDeleteAligned, std::align_val_t>);
}
template <TImportName kName> THook HookDeleteSizedAligned() {
    return Hook<kName>(&Delete<kName, TDeleteSizedAligned, std::size_t, std::align_val_t>);
}

void* Refuse() {
    SetLastFault(ENOMEM);
    return nullptr;
}

void* MallocOrFail(std::size_t size) {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) return Refuse();
    void* const block = CallReal<TNew, "malloc">(size);
    NoteBlock(block, size, __builtin_return_address(0));
    return block;
}

void* CallocOrFail(std::size_t count, std::size_t size) {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) return Refuse();
    void* const block = CallReal<void* (*)(std::size_t, std::size_t), "calloc">(count, size);
    NoteBlock(block, count * size, __builtin_return_address(0));
    return block;
}

void* ReallocOrFail(void* former, std::size_t size) {
    if (MustFail(TFaultKind::Memory, __builtin_return_address(0))) return Refuse();
    // Forgotten before: as soon as it is free, another thread may be given the address.
    ForgetBlock(former);
    void* const block = CallReal<void* (*)(void*, std::size_t), "realloc">(former, size);
    NoteBlock(block, size, __builtin_return_address(0));
    return block;
}

std::vector<THook> GetFreeingHooks() {
    return {
        Hook<"free">(&Delete<"free", TDelete>),
        HookDelete<"_ZdlPv">(),
        HookDelete<"_ZdaPv">(),
        HookDeleteSized<"_ZdlPv" FAULTS_SIZE>(),
        HookDeleteSized<"_ZdaPv" FAULTS_SIZE>(),
        HookDeleteAligned<"_ZdlPvSt11align_val_t">(),
        HookDeleteAligned<"_ZdaPvSt11align_val_t">(),
        HookDeleteSizedAligned<"_ZdlPv" FAULTS_SIZE "St11align_val_t">(),
        HookDeleteSizedAligned<"_ZdaPv" FAULTS_SIZE "St11align_val_t">(),
    };
}

} // namespace

std::vector<THook> GetMemoryHooks() {
    std::vector<THook> hooks = GetFreeingHooks();
    hooks.insert(
        hooks.end(),
        {
            Hook<"malloc">(&MallocOrFail),
            Hook<"calloc">(&CallocOrFail),
            Hook<"realloc">(&ReallocOrFail),
            Hook<"_Znw" FAULTS_SIZE>(&New<"_Znw" FAULTS_SIZE>),
            Hook<"_Zna" FAULTS_SIZE>(&New<"_Zna" FAULTS_SIZE>),
            Hook<"_Znw" FAULTS_SIZE "RKSt9nothrow_t">(&NewNothrow<"_Znw" FAULTS_SIZE "RKSt9nothrow_t">),
            Hook<"_Zna" FAULTS_SIZE "RKSt9nothrow_t">(&NewNothrow<"_Zna" FAULTS_SIZE "RKSt9nothrow_t">),
            Hook<"_Znw" FAULTS_SIZE "St11align_val_t">(&NewAligned<"_Znw" FAULTS_SIZE "St11align_val_t">),
            Hook<"_Zna" FAULTS_SIZE "St11align_val_t">(&NewAligned<"_Zna" FAULTS_SIZE "St11align_val_t">),
        });
    return hooks;
}

std::vector<THook> GetOwnHooks() {
    std::vector<THook> hooks = GetFreeingHooks();
    hooks.push_back(Hook<"_Znw" FAULTS_SIZE>(&OwnNew<"_Znw" FAULTS_SIZE>));
    hooks.push_back(Hook<"_Zna" FAULTS_SIZE>(&OwnNew<"_Zna" FAULTS_SIZE>));
    return hooks;
}

} // namespace vorlund::faults
