// Streams that are read.

#include "vorlund_c/stream.h"

#include "CallbackStream.h"
#include "Guard.h"
#include "StreamObject.h"
#include "Texts.h"

#include <vorlund/Blob.h>
#include <vorlund/MakeObject.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/StreamSelector.h>

#include <cstring>

namespace vorlund::capi {

namespace {

template <class TUnit> void OpenFile(const TUnit* path, vorlund_stream* stream) {
    RequirePointer(stream);
    const CInputStreamSelector file(TakePath(path).c_str());
    MakeHandle<CStreamObject>(stream, CRefPtr<IInputStream>::Adopt(file.GetInputStream()));
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

/// `work` with the stream of a handle.
template <class TWork> void WithStream(const void* handle, TWork&& work) {
    const CUse<CStreamObject> stream(handle);
    work(*stream);
}

template <class TResult, class TWork>
std::int32_t Ask(const char* function, const void* handle, TResult* result, TWork&& work) noexcept {
    return Guarded(function, [&] {
        RequirePointer(result);
        WithStream(handle, [&](CStreamObject& stream) { *result = work(stream); });
    });
}

/// The byte at which a frame begins.
std::int64_t ByteOf(std::uint64_t frame, std::uint32_t frameSize) {
    Require(frame <= static_cast<std::uint64_t>(INT64_MAX) / frameSize, "There is no such frame");
    return static_cast<std::int64_t>(frame * frameSize);
}

std::int32_t Seek(const char* function, vorlund_stream stream, const std::int64_t* position) noexcept {
    return Guarded(function, [&] {
        RequirePointer(position);
        WithStream(stream, [&](CStreamObject& object) { object.Get().Seek(*position); });
    });
}

std::int32_t SeekFrame(const char* function, vorlund_stream stream, const std::uint64_t* frame) noexcept {
    return Guarded(function, [&] {
        RequirePointer(frame);
        WithStream(stream, [&](CStreamObject& object) {
            object.Get().Seek(ByteOf(*frame, object.GetPcm().GetBlockSize()));
        });
    });
}

std::int32_t ReadFrames(const char* function, vorlund_stream stream, std::uint32_t sampleFormat,
                        void* samples, std::uint32_t frames, std::uint32_t* count) noexcept {
    return Guarded(function, [&] {
        RequirePointer(count);
        Require(samples || frames == 0, "A buffer of some room is null");
        Require(sampleFormat <= VORLUND_SAMPLE_24BIT, "Unknown sample format");
        WithStream(stream,
                   [&](CStreamObject& object) { object.ReadFrames(sampleFormat, samples, frames, count); });
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
        Require(bytes || count == 0, "A buffer of some room is null");
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
    return Guarded(__func__, [&] {
        RequirePointer(count);
        Require(buffer || size == 0, "A buffer of some room is null");
        WithStream(stream, [&](CStreamObject& object) { object.Read(buffer, size, count); });
    });
}

int32_t VORLUND_CALL vorlund_stream_seek(vorlund_stream stream, int64_t position) {
    return Seek(__func__, stream, &position);
}

int32_t VORLUND_CALL vorlund_stream_seek_ptr(vorlund_stream stream, const int64_t* position) {
    return Seek(__func__, stream, position);
}

int32_t VORLUND_CALL vorlund_stream_tell(vorlund_stream stream, int64_t* position) {
    return Ask(__func__, stream, position, [](CStreamObject& object) { return object.Get().Tell(); });
}

int32_t VORLUND_CALL vorlund_stream_length(vorlund_stream stream, int64_t* length) {
    return Ask(__func__, stream, length, [](CStreamObject& object) { return object.Get().GetLength(); });
}

int32_t VORLUND_CALL vorlund_stream_eof(vorlund_stream stream, int32_t* is_at_end) {
    return Ask(__func__, stream, is_at_end, [](CStreamObject& object) { return object.Get().Eof() ? 1 : 0; });
}

int32_t VORLUND_CALL vorlund_stream_capabilities(vorlund_stream stream, uint32_t* capabilities) {
    return Ask(__func__, stream, capabilities,
               [](CStreamObject& object) { return object.Get().GetCapabilities(); });
}

int32_t VORLUND_CALL vorlund_stream_close(vorlund_stream stream) {
    return Guarded(__func__,
                   [&] { WithStream(stream, [](CStreamObject& object) { object.Get().Close(); }); });
}

int32_t VORLUND_CALL vorlund_stream_format_id(vorlund_stream stream, uint32_t* id) {
    return Guarded(__func__, [&] {
        RequirePointer(id);
        WithStream(stream, [&](CStreamObject& object) { GiveId(object.Get().GetFormat().id, id); });
    });
}

int32_t VORLUND_CALL vorlund_stream_audio_format(vorlund_stream stream, vorlund_audio_format* format) {
    return Guarded(__func__, [&] {
        WithStream(stream, [&](CStreamObject& object) { GiveFormat(object.GetPcm(), format); });
    });
}

int32_t VORLUND_CALL vorlund_stream_frames(vorlund_stream stream, uint64_t* count) {
    return Ask(__func__, stream, count, [](CStreamObject& object) {
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
    return Ask(__func__, stream, frame, [](CStreamObject& object) {
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
