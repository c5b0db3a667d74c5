#include "vorlund/data/filters/SetFormatIsf.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/SetFormatIsf");
constexpr const wchar* kRead = VRL_L("vorlund::CSetFormatIsf::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

constexpr TFailure kSeekNotConnected{VRL_L("vorlund::CSetFormatIsf::Seek"), kFile, 85, kNotConnected};
constexpr TFailure kTellNotConnected{VRL_L("vorlund::CSetFormatIsf::Tell"), kFile, 91, kNotConnected};
constexpr TFailure kGetLengthNotConnected{VRL_L("vorlund::CSetFormatIsf::GetLength"), kFile, 103,
                                          kNotConnected};
constexpr TFailure kReadNoBuffer{kRead, kFile, 109, VRL_L("buffer is NULL")};
constexpr TFailure kReadNotConnected{kRead, kFile, 111, kNotConnected};
constexpr TFailure kReadNoSample{kRead, kFile, 121, VRL_L("sample is NULL")};
constexpr TFailure kReadSample{kRead, kFile, 122, VRL_L("Media samples are not supported")};
constexpr TFailure kSkipNotConnected{VRL_L("vorlund::CSetFormatIsf::Skip"), kFile, 128, kNotConnected};
constexpr TFailure kFlushNotConnected{VRL_L("vorlund::CSetFormatIsf::Flush"), kFile, 148, kNotConnected};

} // namespace

void CSetFormatIsf::Close() {
    if (!stream_) return;
    stream_->Close();
    Disconnect();
}

std::int64_t CSetFormatIsf::GetLength() {
    if (!stream_) Raise<COperationNotSupportedException>(kGetLengthNotConnected);
    return stream_->GetLength();
}

void CSetFormatIsf::Flush() {
    // Kept on purpose: the other filters raise COperationNotSupportedException here.
    if (!stream_) Raise<CIOException>(kFlushNotConnected);
    stream_->Flush();
}

void CSetFormatIsf::Seek(std::int64_t position) {
    if (!stream_) Raise<COperationNotSupportedException>(kSeekNotConnected);
    stream_->Seek(position);
}

std::int64_t CSetFormatIsf::Tell() {
    if (!stream_) Raise<COperationNotSupportedException>(kTellNotConnected);
    return stream_->Tell();
}

void CSetFormatIsf::Read(IMediaSample* sample) {
    if (!sample) Raise<CNullPtrException>(kReadNoSample);
    Raise<CInvalidParameterException>(kReadSample);
}

std::uint64_t CSetFormatIsf::Read(void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kReadNoBuffer);
    if (!stream_) Raise<CIOException>(kReadNotConnected);
    return stream_->Read(buffer, size);
}

void CSetFormatIsf::Skip(std::uint64_t count) {
    if (!stream_) Raise<CIOException>(kSkipNotConnected);
    stream_->Skip(count);
}

void CSetFormatIsf::SetFormat(const TDataFormat* format) {
    format_.Set(format ? *format : GetEmptyFormat());
}

} // namespace vorlund
