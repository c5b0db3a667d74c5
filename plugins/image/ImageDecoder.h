// The decoder of PNG and JPEG files.
#pragma once

#include "../support/PositionedFilter.h"

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <vector>

/// Delivers the picture of a file, from the upper left pixel on, in the words of PixelForm.h: the alpha of
/// the file as it is stored, not multiplied into the colours, and 255 where the file has none. The
/// whole picture is decoded when the filter connects; the stream is not read after that.
class CImageDecoder : public CPositionedFilter {
public:
    static constexpr vorlund::CId ClassId{0x3B7A0C94, 0x61D5F28E, 0xA90C4E17, 0x58E2B36D};

    /// Raises `CDataFormatException` "Stream has no positions", "Stream is decoded already", "Not a picture
    /// of a known kind", and what the readers say of a damaged file; passes on what the stream raises, and
    /// `std::bad_alloc`. The decoder is then unconnected.
    void Connect(vorlund::IInputStream* stream) override;
    void Disconnect() override;
    const vorlund::TDataFormat& GetFormat() override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using CPositionedFilter::Read;

private:
    vorlund::TDataFormat_ImageRgb format_;
    std::vector<std::uint8_t> pixels_;
};
