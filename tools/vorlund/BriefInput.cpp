#include "BriefInput.h"

#include <algorithm>

using namespace vorlund;

namespace {

/// What is read of a head at once.
constexpr std::uint64_t kMaxPart = 8;

/// A MiB of heads that are read in halves.
constexpr std::uint32_t kMaxZeros = 1 << 18;

} // namespace

CRefPtr<CBriefInput> CBriefInput::Begin(IInputStream& file) {
    auto brief = CRefPtr<CBriefInput>::Adopt(static_cast<CBriefInput*>(NewObject<CBriefInput>()));
    brief->file_ = CRefPtr<IInputStream>::Share(&file);
    return brief;
}

std::uint64_t CBriefInput::Read(void* buffer, std::uint64_t size) {
    if (isSearch_ && zeros_ >= kMaxZeros && size <= kMaxPart) return 0;
    const std::uint64_t count = file_->Read(buffer, size);
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    const bool isZero =
        count <= kMaxPart && std::all_of(bytes, bytes + count, [](auto byte) { return byte == 0; });
    zeros_ = isZero ? zeros_ + 1 : 0;
    return count;
}
