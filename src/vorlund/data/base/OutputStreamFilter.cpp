#include "vorlund/data/base/OutputStreamFilter.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/OutputStreamFilter");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

/// In the order of TOperation, by which the public template asks for one: plug-ins see no table.
constexpr TFailure kOperationNotConnected[] = {
    {VRL_L("vorlund::COutputStreamFilter::GetLength"), kFile, 67, kNotConnected},
    {VRL_L("vorlund::COutputStreamFilter::Flush"), kFile, 73, kNotConnected},
    {VRL_L("vorlund::COutputStreamFilter::Seek"), kFile, 79, kNotConnected},
    {VRL_L("vorlund::COutputStreamFilter::Tell"), kFile, 85, kNotConnected},
};
constexpr TFailure kWriteNotConnected{VRL_L("vorlund::COutputStreamFilter::Write"), kFile, 96, kNotConnected};

} // namespace

void filterdefaults::RaiseOutputNotConnected(TOperation operation) {
    Raise<COperationNotSupportedException>(kOperationNotConnected[static_cast<int>(operation)]);
}

void filterdefaults::Write(IOutputStream* stream, const void* buffer, std::uint64_t size) {
    if (!stream) Raise<CIOException>(kWriteNotConnected);
    stream->Write(buffer, size);
}

} // namespace vorlund
