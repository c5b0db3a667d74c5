// The decoder of YUV4MPEG2 files.
#pragma once

#include "../support/PositionedFilter.h"

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <memory>
#include <vector>

class CY4mFile;

/// Delivers the frames of a file, each from its upper left pixel on, in the words of PixelForm.h. A position
/// may be inside a frame. `Seek` costs nothing; the next `Read` goes there.
class CY4mDecoder : public CPositionedFilter {
public:
    static constexpr vorlund::CId ClassId{0xD4196E53, 0x0FA82B7C, 0x93E5D0B8, 0x7C41A62F};

    CY4mDecoder();
    ~CY4mDecoder() noexcept(false);

    /// Reads the header and finds the frames. Raises `CDataFormatException` "Stream has no positions",
    /// "Stream is decoded already" and what the file is refused for; passes on what the stream raises. The
    /// decoder is then unconnected.
    void Connect(vorlund::IInputStream* stream) override;
    void Disconnect() override;
    const vorlund::TDataFormat& GetFormat() override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using CPositionedFilter::Read;

private:
    std::int64_t GetFrameSize() const;
    std::uint64_t ReadPart(CY4mFile& file, std::uint8_t* buffer, std::uint64_t size);

    std::shared_ptr<CY4mFile> file_;
    /// The frame that was delivered in part, and which one it is.
    std::vector<std::uint8_t> part_;
    std::int64_t partAt_ = -1;
};
