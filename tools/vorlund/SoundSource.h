// The sound of a file, at the rate that is wanted, from one time to another.
#pragma once

#include "ConvertFile.h"
#include "SoundTexts.h"

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class CSoundSource {
public:
    /// \param usualRate  the rate when none is wanted and the file has one that this refuses; returns the
    /// file's own
    ///                   otherwise
    ///
    /// Raises `TProgramError` and the library's exceptions, unless the file is one of a folder that nobody
    /// knows: `IsSkipped`.
    CSoundSource(const TConvertJob& job, const TConvertTarget& target,
                 const std::function<std::uint32_t(std::uint32_t rate)>& usualRate);

    bool IsSkipped() const { return !end_; }
    /// Of what `Read` delivers.
    const vorlund::TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// As it is decoded, a `TSampleFormat`; another rate makes floats of it.
    std::uint32_t GetDecodedFormat() const { return decodedFormat_; }
    /// The file has 24 bits, which are decoded to 32.
    bool IsStoredIn24() const { return isStoredIn24_; }
    /// Frames that `Read` is going to deliver from the beginning to the end; nothing when that is not known.
    std::optional<std::uint64_t> GetFrames() const { return frames_; }
    /// What the file says about itself; of a WAV file that is converted as a whole the marked places too.
    const std::vector<TSoundText>& GetTexts() const { return texts_; }
    const vorlund::TWavMetadata& GetMetadata() const { return metadata_; }

    /// Up to `frames` whole frames; 0 at the end.
    std::size_t Read(void* buffer, std::size_t frames);
    /// Back to the first frame.
    void Rewind();
    /// How much of the sound was read, from 0 to 1.
    double GetShare() const;
    /// Raises when the end was one that nobody expected.
    void CheckEnd();

private:
    void Open(const TConvertJob& job, const std::function<std::uint32_t(std::uint32_t)>& usualRate);
    void LookIntoFile(vorlund::IInputStream& stream);
    void SkipFrames(std::uint64_t frames);

    const vorlund::wstring path_;
    const TConvertTarget& target_;
    std::optional<vorlund::CInputStreamSelector> source_;
    vorlund::CRefPtr<vorlund::IInputStream> end_;
    vorlund::TDataFormat_AudioPcm format_;
    std::uint32_t decodedFormat_ = 0;
    bool isStoredIn24_ = false;
    std::vector<TSoundText> texts_;
    vorlund::TWavMetadata metadata_;
    /// Of the whole sound at this rate.
    std::uint64_t first_ = 0;
    std::optional<std::uint64_t> last_;
    std::optional<std::uint64_t> frames_;
    std::uint64_t done_ = 0;
};
