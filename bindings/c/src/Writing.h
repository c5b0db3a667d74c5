// A sound file that is being written, of whatever kind.
#pragma once

#include "SinkObject.h"
#include "StreamObject.h"

#include <vorlund/AudioEncoder.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/WavWriter.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vorlund::capi {

/// Interleaved samples, 24 bits among them.
struct TSoundFormat {
    std::uint32_t sampleFormat;
    std::uint32_t channels;
    std::uint32_t rate;

    std::uint32_t GetFrameSize() const;
};

/// What is going to be written, before there is a file.
class CWritingPlan {
public:
    /// Raises `CFailure` for an unknown kind, and what the creation of the encoder raises.
    explicit CWritingPlan(const wstring& kind);

    void SetOption(const wstring& name, const wstring& value);
    void SetTag(const wstring& name, const wstring& text);
    /// The format of a record, when this kind has such.
    TSoundFormat TakeFormat(const vorlund_audio_format* format) const;

    /// Empty for WAV.
    CRefPtr<IAudioEncoder> GetEncoder() const { return encoder_.Share(); }
    /// Leaves it to what writes: its references are counted by one thread.
    void GiveUpEncoder() { encoder_ = {}; }
    const TWavMetadata& GetMetadata() const { return metadata_; }

private:
    CSafeRefPtr<IAudioEncoder> encoder_;
    TWavMetadata metadata_;
};

/// The file. On the chain of its sink, or on one of its own.
class CWriting final : public CHandleObject {
public:
    /// Begins the file; without a sink, `output` is its own and is closed at the end.
    CWriting(const CWritingPlan& plan, const COutputStreamSelector& output, const TSoundFormat& format,
             std::shared_ptr<CSinkObject> sink);

    void Write(const void* bytes, std::size_t count);
    void WriteFrames(std::uint32_t sampleFormat, const void* samples, std::size_t frames);
    /// `frames` counts on.
    void WriteStream(CStreamObject& stream, std::uint64_t& frames);
    void Finish();

private:
    std::shared_ptr<CSinkObject> sink_;
    const TSoundFormat format_;
    /// The file of an encoder.
    CSafeRefPtr<IOutputStream> file_;
    std::unique_ptr<CWavWriter> wav_;
    CSafeRefPtr<IAudioEncoder> encoder_;
    std::vector<std::byte> converted_;
    bool isFinished_ = false;
};

} // namespace vorlund::capi
