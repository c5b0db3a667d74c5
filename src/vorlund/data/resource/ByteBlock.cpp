#include "vorlund/data/resource/ByteBlock.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vorlund {
namespace {

/// Saving less than this is not worth a copy.
constexpr std::uint64_t kMuch = 4096;
constexpr std::uint64_t kFirstCapacity = 64;

void Copy(const CByteBlock& target, const CByteBlock& source, std::uint64_t size) {
    if (size > 0) std::memcpy(target.Get(), source.Get(), static_cast<std::size_t>(size));
}

} // namespace

bool CByteBlock::Allocate(std::uint64_t size) {
    std::byte* bytes = nullptr;
    if (size > 0) {
        if (size > kMaxSize) return false;
        bytes = new (std::nothrow) std::byte[static_cast<std::size_t>(size)];
        if (!bytes) return false;
    }
    bytes_.reset(bytes);
    capacity_ = size;
    return true;
}

bool CByteBlock::Grow(std::uint64_t used, std::uint64_t needed, CByteBlock& former) {
    if (needed <= capacity_) return true;
    CByteBlock bigger;
    const std::uint64_t generous = std::min(std::max({needed, capacity_ * 2, kFirstCapacity}), kMaxSize);
    if (!(generous > needed && bigger.Allocate(generous)) && !bigger.Allocate(needed)) return false;
    Copy(bigger, *this, used);
    former = std::exchange(*this, std::move(bigger));
    return true;
}

void CByteBlock::Trim(std::uint64_t used) {
    if (used > 0 && capacity_ - used <= kMuch) return;
    CByteBlock smaller;
    if (!smaller.Allocate(used)) return;
    Copy(smaller, *this, used);
    *this = std::move(smaller);
}

} // namespace vorlund
