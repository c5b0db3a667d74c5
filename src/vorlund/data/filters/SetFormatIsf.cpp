#include "vorlund/data/filters/SetFormatIsf.h"

#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/SetFormatIsf");
constexpr const wchar* kRead = VRL_L("vorlund::CSetFormatIsf::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

} // namespace

constexpr TSetFormatIsfFailures kSetFormatIsfFailures{
    {
        .seekNotConnected{VRL_L("vorlund::CSetFormatIsf::Seek"), kFile, 85, kNotConnected},
        .tellNotConnected{VRL_L("vorlund::CSetFormatIsf::Tell"), kFile, 91, kNotConnected},
        .flushNotConnected{VRL_L("vorlund::CSetFormatIsf::Flush"), kFile, 148, kNotConnected},
        .readNoBuffer{kRead, kFile, 109, VRL_L("buffer is NULL")},
        .readNotConnected{kRead, kFile, 111, kNotConnected},
        .readNoSample{kRead, kFile, 121, VRL_L("sample is NULL")},
        .readSample{kRead, kFile, 122, VRL_L("Media samples are not supported")},
        .skipNotConnected{VRL_L("vorlund::CSetFormatIsf::Skip"), kFile, 128, kNotConnected},
    },
    {VRL_L("vorlund::CSetFormatIsf::GetLength"), kFile, 103, kNotConnected}};

void CSetFormatIsf::Close() {
    if (!stream_) return;
    const CFilterCalls::CCall call(calls_);
    stream_->Close();
    if (call.IsAlive()) Disconnect();
}

std::int64_t CSetFormatIsf::GetLength() {
    return Connected<COperationNotSupportedException>(kSetFormatIsfFailures.getLengthNotConnected)
        .GetLength();
}

void CSetFormatIsf::Flush() {
    // Kept for callers: the other filters raise COperationNotSupportedException here.
    Connected<CIOException>(kSetFormatIsfFailures.flushNotConnected).Flush();
}

void CSetFormatIsf::Connect(IInputStream* stream) {
    auto next = BeginConnect(stream);
    if (!next) return;
    lender_ = AsLending(next.Get());
    stream_ = std::move(next);
}

CLoan CSetFormatIsf::Lend(std::uint64_t size, std::uint64_t grain) {
    Connected<CIOException>(kSetFormatIsfFailures.readNotConnected);
    if (!lender_) return {};
    return lender_->Lend(size, grain);
}

void CSetFormatIsf::SetFormat(const TDataFormat* format) {
    format_.Set(format ? *format : GetEmptyFormat());
}

} // namespace vorlund
