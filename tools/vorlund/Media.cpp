#include "Media.h"

#include "Decoding.h"
#include "Diagnostics.h"

#include "../../plugins/support/PixelForm.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>
#include <vorlund/StreamSelector.h>

#include <algorithm>

using namespace vorlund;

namespace {

/// Null when no loaded decoder makes `format` of the source; the report then says why.
CRefPtr<IInputStream> TryToDecode(const CInputStreamSelector& source, const CId& format,
                                  CDecodeReport& report) {
    try {
        return DecodeSource(source, format, report);
    } catch (const CDataFormatException&) {
    } catch (const CIOException&) {
    }
    return {};
}

/// The mean of colours, each on white as far as it is transparent.
class CMean {
public:
    void Add(std::uint32_t pixel) {
        const std::uint32_t alpha = pixel >> 24;
        for (unsigned int i = 0; i < 3; ++i) sums_[i] += (pixel >> 8 * i & 255) * alpha + 255 * (255 - alpha);
        ++count_;
    }
    std::uint32_t Get() const {
        std::uint32_t pixel = 0;
        const std::uint64_t unit = 255 * count_;
        for (unsigned int i = 0; i < 3; ++i)
            pixel |= static_cast<std::uint32_t>((sums_[i] + unit / 2) / unit) << 8 * i;
        return pixel;
    }

private:
    std::uint64_t sums_[3] = {};
    std::uint64_t count_ = 0;
};

std::uint32_t DivideUp(std::uint32_t value, std::uint32_t divisor) {
    return value / divisor + (value % divisor != 0);
}

} // namespace

CRefPtr<IInputStream> OpenMedia(const wstring& path) {
    const CInputStreamSelector source(path.c_str());
    CDecodeReport picture;
    if (auto stream = TryToDecode(source, TDataFormat_ImageRgb::FormatId, picture)) return stream;
    CDecodeReport video;
    if (auto stream = TryToDecode(source, TDataFormat_VideoRgb::FormatId, video)) return stream;
    CDecodeReport sound;
    if (TryToDecode(source, TDataFormat_AudioPcm::FormatId, sound))
        throw TProgramError{VRL_L("Cannot show '") + path + VRL_L("': it is a sound, see 'vorlund decode'")};
    const CDecodeReport& report = video.GetFurthest() ? video : picture;
    throw TProgramError{VRL_L("Cannot show '") + path + VRL_L("': ") + report.Explain().GetBuffer()};
}

TShownPicture ReadPicture(IInputStream& stream) {
    const auto& format = static_cast<const TDataFormat_ImageRgb&>(stream.GetFormat());
    if (format.pixelFormat != kPixelForm)
        throw TProgramError{VRL_L("The picture has pixels of an unknown form")};
    std::vector<std::uint32_t> row(format.width);
    const std::uint32_t factor =
        std::max({1u, DivideUp(format.width, kMaxShownWidth), DivideUp(format.height, kMaxShownHeight)});
    TShownPicture picture{DivideUp(format.width, factor), DivideUp(format.height, factor), {}};
    std::vector<CMean> means;
    for (std::uint32_t y = 0; y < format.height; ++y) {
        if (!ReadWhole(stream, row.data(), row.size() * sizeof row[0]))
            throw TProgramError{VRL_L("The picture ends early")};
        if (y % factor == 0) means.assign(picture.width, {});
        for (std::uint32_t x = 0; x < format.width; ++x) means[x / factor].Add(row[x]);
        if (y % factor != factor - 1 && y + 1 != format.height) continue;
        for (const CMean& mean : means) picture.pixels.push_back(mean.Get());
    }
    return picture;
}
