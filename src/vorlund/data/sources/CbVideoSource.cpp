#include "vorlund/data/sources/CbVideoSource.h"

#include <algorithm>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/CbVideoSource");
constexpr const wchar* kRead = VRL_L("vorlund::CCbVideoSource::Read");
constexpr const wchar* kSetFormat = VRL_L("vorlund::CCbVideoSource::SetFormat");

constexpr std::uint32_t kDarkBlue = 0xFF000088;

} // namespace

constexpr TVideoSourceFailures kCbVideoSourceFailures{
    {{VRL_L("vorlund::CCbVideoSource::Seek"), kFile, 126, VRL_L("Seek is not supported")},
     {VRL_L("vorlund::CCbVideoSource::Tell"), kFile, 130, VRL_L("Tell is not supported")},
     {VRL_L("vorlund::CCbVideoSource::GetLength"), kFile, 138, VRL_L("GetLength is not supported")},
     {kRead, kFile, 143, VRL_L("buffer is NULL")},
     {kRead, kFile, 161, VRL_L("sample is NULL")},
     {kRead, kFile, 162, VRL_L("Media samples are not supported")}},
    {kSetFormat, kFile, 171, VRL_L("format is NULL")},
    {kSetFormat, kFile, 172, VRL_L("Unsupported format ID")}};

ICbVideoSource* CCbVideoSource::SetCallback(TCallback callback) {
    callback_ = callback;
    return this;
}

void CCbVideoSource::PaintFrame(void* pixels, std::uint32_t frameNumber) {
    if (callback_) {
        TCbData data{pixels, frameNumber, format_.image.pixelFormat};
        callback_(data);
        return;
    }
    std::fill_n(static_cast<std::uint32_t*>(pixels), format_.image.GetSizeInPixels(), kDarkBlue);
}

} // namespace vorlund
