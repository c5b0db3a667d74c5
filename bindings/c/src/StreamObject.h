// What the handles of input streams stand for.
#pragma once

#include "Handles.h"

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct vorlund_audio_format;
struct vorlund_stream_object;

namespace vorlund::capi {

class CStreamObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Stream;

    /// A stream of its own.
    explicit CStreamObject(CRefPtr<IInputStream> stream)
        : CStreamObject(std::move(stream), nullptr, std::make_shared<CChain>()) {}
    /// A stream that was made from another object, which stays as long as this one.
    CStreamObject(CRefPtr<IInputStream> stream, std::shared_ptr<CHandleObject> parent)
        : CStreamObject(std::move(stream), parent, parent->GetChain()) {}
    CStreamObject(CRefPtr<IInputStream> stream, std::shared_ptr<CHandleObject> parent,
                  std::shared_ptr<CChain> chain)
        : CHandleObject(Kind), parent_(std::move(parent)), stream_(std::move(stream)) {
        chain_ = std::move(chain);
    }

    IInputStream& Get() const { return *stream_; }
    CRefPtr<IInputStream> Share() const { return stream_.Share(); }

    /// The format of PCM whose frames have a size. Raises where the stream has another one.
    TDataFormat_AudioPcm GetPcm() const;

    /// Reads until `size` bytes are there or the stream ends; `*count` follows it. Raises what the stream
    /// raises, and `CReadFailure`.
    void Read(void* buffer, std::size_t size, std::uint32_t* count);
    /// The same for frames.
    void ReadFrames(std::uint32_t sampleFormat, void* samples, std::uint32_t frames, std::uint32_t* count);
    void ReadDoubles(double* samples, std::uint32_t frames, std::uint32_t* count);

private:
    void MakeRoom(std::size_t size);
    /// Frames of `size` bytes each, which `convert(to, from, frames)` makes of the stream's; null leaves them
    /// as they are.
    template <class TConvert>
    void ReadPieces(const TDataFormat_AudioPcm& format, void* samples, std::size_t size, std::uint32_t frames,
                    std::uint32_t* count, const TConvert& convert);

    /// Outlives the stream: the library counts the parent's references.
    std::shared_ptr<CHandleObject> parent_;
    CSafeRefPtr<IInputStream> stream_;
    /// Of frames that are converted.
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t room_ = 0;
};

/// The format that a record describes. Raises `CFailure` for an unknown sample format, and no channels.
TDataFormat_AudioPcm TakeFormat(const vorlund_audio_format* format);
void GiveFormat(const TDataFormat_AudioPcm& format, vorlund_audio_format* record);

/// An identifier as four words.
void GiveId(const CId& id, std::uint32_t* words);
CId TakeId(const std::uint32_t* words);

} // namespace vorlund::capi
