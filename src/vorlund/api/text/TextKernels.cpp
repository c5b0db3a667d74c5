#include "vorlund/api/text/TextKernels.h"

#include "vorlund/api/text/TextKernels_scalar.h"
#if defined(__SSE2__)
#include "vorlund/api/text/TextKernels_sse2.h"
#endif

namespace vorlund {
namespace {

constexpr const TTextSet* kSets[] = {&scalar::kText, VRL_X86_SETS(&sse2::kText)};
constexpr const TTextSet& kInUse = FindFastestSet<TTextSet>(kSets);

} // namespace

std::size_t TextLength(const wchar* text) {
    return kInUse.routines.length(text);
}

std::size_t TextLength(const wchar* text, std::size_t limit) {
    return kInUse.routines.boundedLength(text, limit);
}

int CompareText(const wchar* left, const wchar* right) {
    return kInUse.routines.compare(left, right);
}

std::size_t FindFirstUnit(const wchar* text, wchar unit) {
    return kInUse.routines.findFirstUnitOfTerminated(text, unit);
}

std::size_t FindLastUnit(const wchar* text, wchar unit) {
    return kInUse.routines.findLastUnitOfTerminated(text, unit);
}

std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit) {
    return kInUse.routines.findFirstUnit(text, length, unit);
}

std::size_t FindLastUnit(const wchar* text, std::size_t length, wchar unit) {
    return kInUse.routines.findLastUnit(text, length, unit);
}

std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                          std::size_t needleLength) {
    return kInUse.routines.findFirstText(text, length, needle, needleLength);
}

std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                         std::size_t needleLength) {
    return kInUse.routines.findLastText(text, length, needle, needleLength);
}

std::size_t FindAllText(const wchar* text, std::size_t length, const wchar* needle, std::size_t needleLength,
                        std::uint32_t* places, std::size_t capacity) {
    return kInUse.routines.findAllText(text, length, needle, needleLength, places, capacity);
}

void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to) {
    kInUse.routines.replaceUnit(text, length, from, to);
}

void WidenText(wchar* destination, const char* source, std::size_t length) {
    kInUse.routines.widen(destination, source, length);
}

bool CopyTextAndLook(wchar* destination, const wchar* source, std::size_t length, wchar unit) {
    return kInUse.routines.copyAndLook(destination, source, length, unit);
}

bool WidenBytesAndLook(wchar* destination, const std::uint8_t* source, std::size_t length, wchar unit) {
    return kInUse.routines.widenBytesAndLook(destination, source, length, unit);
}

TKernelSets<TTextSet> GetTextSets() {
    return kSets;
}

const TTextSet& GetTextSetInUse() {
    return kInUse;
}

} // namespace vorlund
