// The decoder of what the system can decode and this library does not.
#pragma once

#include "SystemSound.h"

#include <vorlund/DataFormat.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>
#include <memory>

/// Delivers the first sound of an M4A, MP4 or AAC file as PCM: byte 0 is the first one of the first frame.
/// Its layer holds the connected stream, and its defaults serve every other operation, also while nothing is
/// connected.
///
/// The decoders of systems begin at the begin. So what comes before a position is decoded, from the present
/// one or, to go back, from the first sample; and `GetLength` decodes everything once.
class CSystemDecoder : public vorlund::CInputFilterImpl<vorlund::IInputStreamFilter> {
    using TLayer = vorlund::CInputFilterImpl<vorlund::IInputStreamFilter>;

public:
    static constexpr vorlund::CId ClassId{0x91D4C7A3, 0x2E6B4F08, 0xB5039A6E, 0x7C18F25D};

    CSystemDecoder();
    ~CSystemDecoder() noexcept(false);

    /// Copies the file and has its begin decoded. Raises `CDataFormatException` "Stream has no positions",
    /// "Stream is decoded already", "Not an M4A, MP4 or AAC file" and what the port raises; passes on what
    /// the stream raises; the decoder is then unconnected.
    void Connect(vorlund::IInputStream* stream) override;
    void Disconnect() override;
    const vorlund::TDataFormat& GetFormat() override;

    std::int64_t GetLength() override;
    std::int64_t Tell() override;
    /// Every position behind the end counts as the end. Raises `CIOException` "Position before the sound".
    void Seek(std::int64_t position) override;
    bool Eof() override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using TLayer::Read;
    /// At most to the end.
    void Skip(std::uint64_t count) override;

private:
    /// Brings the system's decoder to the position. False when the sound ends before.
    bool GoToPosition();

    std::shared_ptr<const CFileCopy> file_;
    std::unique_ptr<ISystemSound> sound_;
    vorlund::TDataFormat_AudioPcm format_;
    /// Where the system's decoder is.
    std::int64_t soundAt_ = 0;
    std::int64_t position_ = 0;
    /// -1 while it is not known.
    std::int64_t length_ = -1;
};
