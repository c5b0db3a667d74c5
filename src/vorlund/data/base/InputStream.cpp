#include "vorlund/data/base/InputStream.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStream");
constexpr const wchar* kRead = VRL_L("vorlund::CInputStream::Read");
constexpr TFailure kSampleIsNull{kRead, kFile, 71, VRL_L("sample is NULL")};
constexpr TFailure kNoMediaSamples{kRead, kFile, 72, VRL_L("Media samples are not supported")};
constexpr TFailure kBufferIsNull{kRead, kFile, 77, VRL_L("buffer is NULL")};

} // namespace

std::uint64_t streamdefaults::Read(void* buffer, std::uint64_t) {
    if (!buffer) Raise<CNullPtrException>(kBufferIsNull);
    return 0;
}

void streamdefaults::ReadSample(IMediaSample* sample) {
    if (!sample) Raise<CNullPtrException>(kSampleIsNull);
    Raise<CInvalidStateException>(kNoMediaSamples);
}

} // namespace vorlund
