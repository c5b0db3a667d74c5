// The decoder of the files that libsndfile reads.
#pragma once

#include "SoundTags.h"

#include <vorlund/DataFormat.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>
#include <memory>
#include <vector>

class CSoundFile;

/// Delivers the sound of a file as PCM: byte 0 is the first one of the first frame. Its layer holds the
/// connected stream, and its defaults serve every other operation, also while nothing is connected.
///
/// A position may be inside a frame. `Seek` costs nothing; the next `Read` goes there, and where the format
/// of the file allows no jump it decodes what comes before.
class CSndfileDecoder : public vorlund::CInputFilterImpl<ISoundTags> {
    using TLayer = vorlund::CInputFilterImpl<ISoundTags>;

public:
    static constexpr vorlund::CId ClassId{0x8C1E5D27, 0x4F903AB6, 0xE27B0C91, 0x63D4A85F};

    CSndfileDecoder();
    ~CSndfileDecoder() noexcept(false);

    /// Looks at the file and goes to its first frame. Raises `CDataFormatException` "Stream has no
    /// positions", "Stream is decoded already", "Not a sound file of a known kind" and "Damaged or
    /// unsupported sound file", and passes on what the stream raises; the decoder is then unconnected.
    void Connect(vorlund::IInputStream* stream) override;
    void Disconnect() override;
    const vorlund::TDataFormat& GetFormat() override;

    /// Of the sound, without what an encoder added to it where the file tells that.
    std::int64_t GetLength() override;
    std::int64_t Tell() override;
    /// Every position behind the end counts as the end. Raises `CIOException` "Position before the sound".
    void Seek(std::int64_t position) override;
    bool Eof() override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using TLayer::Read;
    /// At most to the end.
    void Skip(std::uint64_t count) override;

    const vorlund::wchar* GetTag(TSoundTag tag) override;

private:
    std::uint64_t ReadPart(CSoundFile& file, std::uint8_t* buffer, std::uint64_t size);

    std::shared_ptr<CSoundFile> file_;
    std::int64_t position_ = 0;
    /// The frame that was delivered in part, and which one it is.
    std::vector<std::uint8_t> part_;
    std::int64_t partAt_ = -1;
    vorlund::wstring tag_;
};
