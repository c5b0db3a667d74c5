// Streams that are read.

#include "vorlund_c/stream.h"

#include "CallbackStream.h"
#include "Calls.h"
#include "Files.h"
#include "StreamObject.h"
#include "Texts.h"

#include <vorlund/Blob.h>
#include <vorlund/MakeObject.h>
#include <vorlund/MemoryStream.h>

#include <cstring>

namespace vorlund::capi {

namespace {

template <class TUnit> void OpenFile(const TUnit* path, vorlund_stream* stream) {
    RequirePointer(stream);
    MakeHandle<CStreamObject>(stream, OpenInputFile(TakePath(path)));
}

/// Reads bytes of its own.
class CBytesStream final : public CHandleObject {
public:
    explicit CBytesStream(const void* bytes, std::size_t count)
        : CHandleObject(TKind::Stream), bytes_(count) {
        if (count > 0) std::memcpy(bytes_.data(), bytes, count);
        chain_ = std::make_shared<CChain>();
    }
    const std::vector<std::byte>& GetBytes() const { return bytes_; }

private:
    std::vector<std::byte> bytes_;
};

/// The byte at which a frame begins.
std::int64_t ByteOf(std::uint64_t frame, std::uint32_t frameSize) {
    Require(frame <= static_cast<std::uint64_t>(INT64_MAX) / frameSize, "There is no such frame");
    return static_cast<std::int64_t>(frame * frameSize);
}

std::int32_t Seek(const char* function, vorlund_stream stream, const std::int64_t* position) noexcept {
    return On<CStreamObject>(function, stream, [&](CStreamObject& object) {
        RequirePointer(position);
        object.Get().Seek(*position);
    });
}

std::int32_t SeekFrame(const char* function, vorlund_stream stream, const std::uint64_t* frame) noexcept {
    return On<CStreamObject>(function, stream, [&](CStreamObject& object) {
        RequirePointer(frame);
        object.Get().Seek(ByteOf(*frame, object.GetPcm().GetBlockSize()));
    });
}

std::int32_t ReadFrames(const char* function, vorlund_stream stream, std::uint32_t sampleFormat,
                        void* samples, std::uint32_t frames, std::uint32_t* count) noexcept {
    return On<CStreamObject>(function, stream, [&](CStreamObject& object) {
        RequirePointer(count);
        RequireBuffer(samples, frames);
        Require(sampleFormat <= VORLUND_SAMPLE_24BIT, "Unknown sample format");
        object.ReadFrames(sampleFormat, samples, frames, count);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;
using vorlund::IInputStream;

int32_t VORLUND_CALL vorlund_stream_open_file(const char* path, vorlund_stream* stream) {
    return Guarded(__func__, [&] { OpenFile(path, stream); });
}

int32_t VORLUND_CALL vorlund_stream_open_file16(const uint16_t* path, vorlund_stream* stream) {
    return Guarded(__func__, [&] { OpenFile(path, stream); });
}

int32_t VORLUND_CALL vorlund_stream_open_memory(const void* bytes, uint32_t count, vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        RequireBuffer(bytes, count);
        const auto copy = std::make_shared<CBytesStream>(bytes, count);
        auto memory = CRefPtr<vorlund::IMemoryInputStream>::Adopt(
            vorlund::CreateMemoryInput(copy->GetBytes().data(), copy->GetBytes().size()));
        MakeHandle<CStreamObject>(stream, CRefPtr<IInputStream>(std::move(memory)), copy);
    });
}

int32_t VORLUND_CALL vorlund_stream_create(const vorlund_stream_callbacks* callbacks, void* user,
                                           const vorlund_audio_format* format, vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        MakeCallbackStream(callbacks, user, format, stream);
    });
}

int32_t VORLUND_CALL vorlund_stream_read(vorlund_stream stream, void* buffer, uint32_t size,
                                         uint32_t* count) {
    return On<CStreamObject>(__func__, stream, [&](CStreamObject& object) {
        RequirePointer(count);
        RequireBuffer(buffer, size);
        object.Read(buffer, size, count);
    });
}

int32_t VORLUND_CALL vorlund_stream_seek(vorlund_stream stream, int64_t position) {
    return Seek(__func__, stream, &position);
}

int32_t VORLUND_CALL vorlund_stream_seek_ptr(vorlund_stream stream, const int64_t* position) {
    return Seek(__func__, stream, position);
}

int32_t VORLUND_CALL vorlund_stream_tell(vorlund_stream stream, int64_t* position) {
    return Ask<CStreamObject>(__func__, stream, position,
                              [](CStreamObject& object) { return object.Get().Tell(); });
}

int32_t VORLUND_CALL vorlund_stream_length(vorlund_stream stream, int64_t* length) {
    return Ask<CStreamObject>(__func__, stream, length,
                              [](CStreamObject& object) { return object.Get().GetLength(); });
}

int32_t VORLUND_CALL vorlund_stream_eof(vorlund_stream stream, int32_t* is_at_end) {
    return Ask<CStreamObject>(__func__, stream, is_at_end,
                              [](CStreamObject& object) { return object.Get().Eof() ? 1 : 0; });
}

int32_t VORLUND_CALL vorlund_stream_capabilities(vorlund_stream stream, uint32_t* capabilities) {
    return Ask<CStreamObject>(__func__, stream, capabilities,
                              [](CStreamObject& object) { return object.Get().GetCapabilities(); });
}

int32_t VORLUND_CALL vorlund_stream_close(vorlund_stream stream) {
    return On<CStreamObject>(__func__, stream, [](CStreamObject& object) { object.Get().Close(); });
}

int32_t VORLUND_CALL vorlund_stream_format_id(vorlund_stream stream, uint32_t* id) {
    return On<CStreamObject>(__func__, stream,
                             [&](CStreamObject& object) { GiveId(object.Get().GetFormat().id, id); });
}

int32_t VORLUND_CALL vorlund_stream_audio_format(vorlund_stream stream, vorlund_audio_format* format) {
    return On<CStreamObject>(__func__, stream,
                             [&](CStreamObject& object) { GiveFormat(object.GetPcm(), format); });
}

int32_t VORLUND_CALL vorlund_stream_frames(vorlund_stream stream, uint64_t* count) {
    return Ask<CStreamObject>(__func__, stream, count, [](CStreamObject& object) {
        const std::uint32_t frame = object.GetPcm().GetBlockSize();
        return static_cast<std::uint64_t>(object.Get().GetLength()) / frame;
    });
}

int32_t VORLUND_CALL vorlund_stream_seek_frame(vorlund_stream stream, uint64_t frame) {
    return SeekFrame(__func__, stream, &frame);
}

int32_t VORLUND_CALL vorlund_stream_seek_frame_ptr(vorlund_stream stream, const uint64_t* frame) {
    return SeekFrame(__func__, stream, frame);
}

int32_t VORLUND_CALL vorlund_stream_tell_frame(vorlund_stream stream, uint64_t* frame) {
    return Ask<CStreamObject>(__func__, stream, frame, [](CStreamObject& object) {
        const std::uint32_t size = object.GetPcm().GetBlockSize();
        return static_cast<std::uint64_t>(object.Get().Tell()) / size;
    });
}

int32_t VORLUND_CALL vorlund_stream_read_frames(vorlund_stream stream, uint32_t sample_format, void* samples,
                                                uint32_t frames, uint32_t* count) {
    return ReadFrames(__func__, stream, sample_format, samples, frames, count);
}

int32_t VORLUND_CALL vorlund_stream_read_int16(vorlund_stream stream, int16_t* samples, uint32_t frames,
                                               uint32_t* count) {
    return ReadFrames(__func__, stream, VORLUND_SAMPLE_16BIT, samples, frames, count);
}

int32_t VORLUND_CALL vorlund_stream_read_int32(vorlund_stream stream, int32_t* samples, uint32_t frames,
                                               uint32_t* count) {
    return ReadFrames(__func__, stream, VORLUND_SAMPLE_32BIT, samples, frames, count);
}

int32_t VORLUND_CALL vorlund_stream_read_float(vorlund_stream stream, float* samples, uint32_t frames,
                                               uint32_t* count) {
    return ReadFrames(__func__, stream, VORLUND_SAMPLE_FLOAT, samples, frames, count);
}

int32_t VORLUND_CALL vorlund_stream_read_double(vorlund_stream stream, double* samples, uint32_t frames,
                                                uint32_t* count) {
    return On<CStreamObject>(__func__, stream, [&](CStreamObject& object) {
        RequirePointer(count);
        RequireBuffer(samples, frames);
        object.ReadDoubles(samples, frames, count);
    });
}
