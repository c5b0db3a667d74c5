#include "vorlund/serial/LineKernels.h"

namespace vorlund {
namespace {

constinit const TLineSet kTextLines{
    "text",
    [] { return true; },
    {[](const wchar* text, std::size_t length, wchar unit) { return FindFirstUnit(text, length, unit); },
     CopyTextAndLook, WidenBytesAndLook},
};

constexpr const TLineSet* kSets[] = {&kTextLines, VRL_X86_SETS(&kAvx2Lines)};

} // namespace

TKernelSets<TLineSet> GetLineSets() {
    return kSets;
}

// Usable from the first instruction on, and faster once this file is initialised.
constinit const TLineSet* lineKernels = &kTextLines;

[[maybe_unused]] static const TLineSet* const chosen = lineKernels = &FindFastestSet(GetLineSets());

} // namespace vorlund
