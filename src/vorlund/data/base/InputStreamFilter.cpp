#include "vorlund/data/base/InputStreamFilter.h"

#include "vorlund/data/base/NoMediaSamples.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStreamFilter");
constexpr const wchar* kRead = VRL_L("vorlund::CInputStreamFilter::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

/// In the order of TOperation, by which the public template asks for one: plug-ins see no table.
constexpr TFailure kOperationNotConnected[] = {
    {VRL_L("vorlund::CInputStreamFilter::GetLength"), kFile, 66, kNotConnected},
    {VRL_L("vorlund::CInputStreamFilter::Flush"), kFile, 72, kNotConnected},
    {VRL_L("vorlund::CInputStreamFilter::Seek"), kFile, 78, kNotConnected},
    {VRL_L("vorlund::CInputStreamFilter::Tell"), kFile, 84, kNotConnected},
};
constexpr TFailure kSampleIsNull{kRead, kFile, 102, VRL_L("sample is NULL")};
// Kept for callers: the default stream raises CInvalidStateException here, a filter
// CInvalidParameterException.
constexpr TFailure kNoMediaSamples{kRead, kFile, 103, VRL_L("Media samples are not supported")};
constexpr TFailure kBufferIsNull{kRead, kFile, 108, VRL_L("buffer is NULL")};
constexpr TFailure kReadNotConnected{kRead, kFile, 109, kNotConnected};

} // namespace

void filterdefaults::RaiseInputNotConnected(TOperation operation) {
    Raise<COperationNotSupportedException>(kOperationNotConnected[static_cast<int>(operation)]);
}

void filterdefaults::ReadSample(IMediaSample* sample) {
    RefuseMediaSample(sample, kSampleIsNull, kNoMediaSamples);
}

std::uint64_t filterdefaults::Read(IInputStream* stream, void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kBufferIsNull);
    if (!stream) Raise<CIOException>(kReadNotConnected);
    return stream->Read(buffer, size);
}

} // namespace vorlund
