#include "vorlund/data/sources/RandomGenerator.h"

#include "vorlund/data/sources/RandomBytes.h"

#include <algorithm>
#include <cstring>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/RandomGenerator");
constexpr const wchar* kRead = VRL_L("vorlund::CRandomGenerator::Read");

constexpr TFailure kFormatIsNull{VRL_L("vorlund::CRandomGenerator::SetFormat"), kFile, 141,
                                 VRL_L("format is NULL")};

} // namespace

constexpr TEndlessSourceFailures kRandomGeneratorFailures{
    {VRL_L("vorlund::CRandomGenerator::Seek"), kFile, 96, VRL_L("Seek is not supported")},
    {VRL_L("vorlund::CRandomGenerator::Tell"), kFile, 100, VRL_L("Tell is not supported")},
    {VRL_L("vorlund::CRandomGenerator::GetLength"), kFile, 108, VRL_L("GetLength is not supported")},
    {kRead, kFile, 113, VRL_L("buffer is NULL")},
    {kRead, kFile, 134, VRL_L("sample is NULL")},
    {kRead, kFile, 135, VRL_L("Media samples are not supported")}};

std::uint64_t CRandomGenerator::Read(void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kRandomGeneratorFailures.bufferIsNull);
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    if (repeatCount_ <= 1) {
        state_ = WriteRandomBytes(state_, bytes, static_cast<std::size_t>(size));
        return size;
    }
    // Kept for callers: each call begins with a new value, though the last one may have been cut short.
    for (std::uint64_t left = size; left > 0;) {
        const auto run = static_cast<std::size_t>(std::min<std::uint64_t>(left, repeatCount_));
        state_ = NextRandomState(state_);
        std::memset(bytes, RandomByteOf(state_), run);
        bytes += run;
        left -= run;
    }
    return size;
}

void CRandomGenerator::SetFormat(const TDataFormat* format) {
    if (!format) Raise<CNullPtrException>(kFormatIsNull);
    format_.Set(*format);
}

IRandomGenerator* CRandomGenerator::SetSeed(std::uint32_t seed) {
    state_ = seed;
    return this;
}

IRandomGenerator* CRandomGenerator::SetRepeatCount(std::uint32_t count) {
    repeatCount_ = count;
    return this;
}

} // namespace vorlund
