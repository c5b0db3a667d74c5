// The class behind `IAudioPictures`.
#pragma once

#include "LiveSound.h"
#include "Painter.h"

#include <vorlund/AudioPictures.h>
#include <vorlund/PcmFilterImpl.h>

#include <cstdint>
#include <memory>
#include <vector>

/// The layer below delivers the sound as floats; this one keeps what the next picture needs of it.
class CAudioPictures : public vorlund::CPcmFilterImpl<vorlund::IAudioPictures> {
    using TLayer = vorlund::CPcmFilterImpl<vorlund::IAudioPictures>;

public:
    static constexpr vorlund::CId ClassId = vorlund::classid::CAudioPictures;

    using TLayer::Read;

    void Disconnect() override;
    std::int64_t GetLength() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override { return stream_ ? at_ : TLayer::Tell(); }
    bool Eof() override;
    const vorlund::TDataFormat& GetFormat() override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;

    void SetSettings(const vorlund::TAudioPictureSettings& settings) override;
    vorlund::TAudioPictureSettings GetSettings() override { return settings_; }
    void Start(std::uint32_t channels, std::uint32_t samplesPerSec) override;
    void Write(const float* samples, std::size_t frames) override;
    void Draw(std::uint32_t* picture) override;

protected:
    ~CAudioPictures() noexcept(false) = default;

private:
    struct TLive {
        TLive(const vorlund::TAudioPictureSettings& settings, std::uint32_t channels,
              std::uint32_t samplesPerSec);

        CPainter painter;
        const std::uint32_t kept;
        CLiveSound sound;
        std::vector<float> samples;
    };

    void BeginSource() override;
    void BeginAt(std::uint64_t frame) override;
    std::uint64_t GetOutputFrames(std::uint64_t frames) override { return frames; }
    void Make(vorlund::CBlockBuffer& output, const std::byte* block, std::size_t frames,
              bool isLast) override;

    std::int64_t GetPictureSize() const { return video_.image.GetSizeInBytes(); }
    /// The frame of sound that a picture is about.
    std::int64_t GetCentre(std::int64_t picture) const;
    /// The first picture that is about that frame of sound or a later one.
    std::int64_t GetPictureAt(std::int64_t frame) const;
    bool HasSeek() { return (GetCapabilities() & vorlund::STREAM_CAPABILITY_SEEK) != 0; }

    // These use the source, which may change the connection: then, and when there is no such picture, they
    // return false.
    bool AnalyseUntil(std::int64_t picture);
    bool BeginNear(std::int64_t picture);
    bool KeepAround(std::int64_t centre);
    bool TakeSound(std::size_t frames);

    TSound GetSound(std::int64_t centre) const;
    std::uint64_t ReadPart(std::byte* buffer, std::uint64_t size);

    vorlund::TAudioPictureSettings settings_;
    vorlund::TDataFormat_VideoRgb video_;
    std::unique_ptr<CPainter> painter_;
    /// Of the source's channels, the first ones.
    std::uint32_t kept_ = 0;
    /// The sound from the frame `soundFirst_` on, which is below 0 when silence comes before; behind the end
    /// of the source it is silent too.
    std::vector<float> sound_;
    std::int64_t soundFirst_ = 0;
    /// The source's frames that were taken end here.
    std::int64_t taken_ = 0;
    bool isEnded_ = false;
    /// The first picture that is not analysed.
    std::int64_t next_ = 0;
    /// The position, in bytes of the pictures.
    std::int64_t at_ = 0;
    /// A picture that is read in parts.
    std::vector<std::uint32_t> part_;
    std::int64_t partAt_ = -1;
    bool isReading_ = false;
    /// The source's samples as floats, where they are not.
    std::vector<float> block_;

    std::unique_ptr<TLive> live_;
};
