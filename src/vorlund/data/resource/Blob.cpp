#include "vorlund/data/resource/ByteBlock.h"

#include <vorlund/Blob.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/Blob");
constexpr TFailure kDataIsNull{VRL_L("vorlund::CBlob::SetData"), kFile, 48, VRL_L("data is NULL")};
constexpr TFailure kOutOfMemory{VRL_L("vorlund::CBlob::Allocate"), kFile, 63, VRL_L("malloc failed")};

/// `size` uninitialised bytes, null for none.
unsigned char* Allocate(std::uint64_t size) {
    if (size == 0) return nullptr;
    unsigned char* const data = size > CByteBlock::kMaxSize
                                    ? nullptr
                                    : new (std::nothrow) unsigned char[static_cast<std::size_t>(size)];
    if (!data) Raise<COutOfMemoryException>(kOutOfMemory);
    return data;
}

} // namespace

CBlob::CBlob(const void* data, std::uint64_t size) {
    SetData(data, size);
}

CBlob::CBlob(const CBlob& other) : CBlob(other.data_, other.size_) {}

CBlob::CBlob(CBlob&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

CBlob& CBlob::operator=(const CBlob& other) {
    if (this != &other) SetData(other.data_, other.size_);
    return *this;
}

CBlob& CBlob::operator=(CBlob&& other) noexcept {
    CBlob taken(std::move(other));
    std::swap(data_, taken.data_);
    std::swap(size_, taken.size_);
    return *this;
}

CBlob::~CBlob() {
    delete[] data_;
}

void CBlob::SetData(const void* data, std::uint64_t size) {
    if (!data && size > 0) Raise<CNullPtrException>(kDataIsNull);
    unsigned char* const copy = Allocate(size);
    if (size > 0) std::memcpy(copy, data, static_cast<std::size_t>(size));
    delete[] std::exchange(data_, copy);
    size_ = size;
}

void CBlob::SetSize(std::uint64_t size) {
    if (size == size_) return;
    unsigned char* const resized = Allocate(size);
    const auto kept = static_cast<std::size_t>(std::min(size, size_));
    if (resized) {
        if (kept > 0) std::memcpy(resized, data_, kept);
        std::memset(resized + kept, 0, static_cast<std::size_t>(size) - kept);
    }
    delete[] std::exchange(data_, resized);
    size_ = size;
}

void CBlob::Clear() {
    SetSize(0);
}

bool CBlob::operator==(const CBlob& other) const {
    return size_ == other.size_ &&
           (size_ == 0 || std::memcmp(data_, other.data_, static_cast<std::size_t>(size_)) == 0);
}

} // namespace vorlund
