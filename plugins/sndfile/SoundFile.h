// A file that libsndfile reads, frame by frame from any place, always with the samples of a decoding from the
// start.
#pragma once

#include "SoundFormats.h"
#include "VirtualFile.h"

#include <vorlund/DataFormat.h>
#include <vorlund/DecoderRefusal.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <memory>
#include <vector>

class CSoundFile {
public:
    /// Refuses by `CDataFormatException` when the stream holds no file of a kind that is known, or a damaged
    /// one, and raises what the stream raises. The caller keeps the stream alive during each call.
    CSoundFile(vorlund::IInputStream& stream, const vorlund::CRefusal& refusal);

    /// False when the stream was refused.
    bool IsOpen() const { return file_ != nullptr; }

    const vorlund::TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// Frames of the whole sound. Becomes less when the file turns out to end before.
    std::int64_t GetFrames() const { return frames_; }

    /// Decodes at most `count` frames from `frame` on; the number of frames, 0 at the end. `buffer` is
    /// aligned for its samples. Raises what the stream raises; a stream that reads from here inside its own
    /// operation gets 0.
    std::int64_t Read(std::int64_t frame, void* buffer, std::int64_t count);

    /// A text of the file by libsndfile's number, or null. It is valid until the next call that reads.
    const char* GetText(std::uint32_t kind) const {
        return file_ ? sf_get_string(file_.get(), static_cast<int>(kind)) : nullptr;
    }

private:
    struct TCloser {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };

    void Open();
    void GoTo(std::int64_t frame);
    /// Decodes and forgets what comes before `frame`.
    void DecodeOnTo(std::int64_t frame);
    void GoByPages(std::int64_t frame);
    /// True when libsndfile is at `frame` now.
    bool Jump(std::int64_t frame);
    void CountFrames();

    CVirtualFile virtualFile_;
    std::unique_ptr<SNDFILE, TCloser> file_;
    SF_INFO info_{};
    vorlund::TDataFormat_AudioPcm format_;
    TSeekRule seekRule_ = TSeekRule::Direct;
    std::int64_t frames_ = 0;
    /// The frame that libsndfile delivers next.
    std::int64_t next_ = 0;
    /// Vorbis: no jump leads behind this frame.
    std::int64_t lastJump_ = 0;
    std::vector<std::uint8_t> scratch_;
    bool isBusy_ = false;
};
