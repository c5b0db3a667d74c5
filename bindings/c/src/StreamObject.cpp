#include "StreamObject.h"

#include "Records.h"
#include "vorlund_c/stream.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/Exception.h>
#include <vorlund/FormatCast.h>
#include <vorlund/StreamErrors.h>

#include <algorithm>
#include <exception>
#include <type_traits>

namespace vorlund::capi {

namespace {

constexpr TFailure kNoPcm{VRL_L("vorlund_stream_audio_format"), VRL_L("bindings/c"), 0,
                          VRL_L("The stream is no PCM")};
constexpr std::size_t kFormatRecord = 16;
/// Bytes of frames that are converted piece by piece: they stay in the second-level cache, and a request to
/// the system for so many costs little beside them.
constexpr std::size_t kPiece = std::size_t{128} * 1024;

} // namespace

TDataFormat_AudioPcm CStreamObject::GetPcm() const {
    const auto* const format = FormatCast<TDataFormat_AudioPcm>(stream_->GetFormat());
    if (!format || format->GetBlockSize() == 0) Raise<CDataFormatException>(kNoPcm);
    return *format;
}

void CStreamObject::Read(void* buffer, std::size_t size, std::uint32_t* count) {
    std::byte* const bytes = static_cast<std::byte*>(buffer);
    std::size_t filled = 0;
    *count = 0;
    const auto note = [&](std::uint64_t more) {
        filled += static_cast<std::size_t>(std::min<std::uint64_t>(more, size - filled));
        *count = static_cast<std::uint32_t>(filled);
        return more > 0;
    };
    // Large pieces where the stream has such, and what is not a whole frame behind them.
    if (FormatCast<TDataFormat_AudioPcm>(stream_->GetFormat()))
        note(vorlund::ReadFrames(*stream_, bytes, size));
    while (filled < size && note(stream_->Read(bytes + filled, size - filled))) {
    }
    if (filled > 0 || size == 0) return;
    if (const std::uint32_t error = GetReadError(*stream_)) throw CReadFailure(error);
}

void CStreamObject::MakeRoom(std::size_t size) {
    if (size <= room_) return;
    // Not zeroed: only what was read is converted.
    bytes_ = std::make_unique_for_overwrite<std::byte[]>(size);
    room_ = size;
}

template <class TConvert>
void CStreamObject::ReadPieces(const TDataFormat_AudioPcm& format, void* samples, std::size_t size,
                               std::uint32_t frames, std::uint32_t* count, const TConvert& convert) {
    constexpr bool isSame = std::is_null_pointer_v<TConvert>;
    const std::size_t from = format.GetBlockSize();
    *count = 0;
    if (isSame) Require(frames <= UINT32_MAX / from, "There are too many frames");
    const std::size_t piece = isSame ? frames : std::max<std::size_t>(1, kPiece / from);
    if (!isSame) MakeRoom(std::min<std::size_t>(piece, frames) * from);
    std::byte* next = static_cast<std::byte*>(samples);
    bool isMore = true;
    while (isMore && *count < frames) {
        const std::size_t wanted = std::min<std::size_t>(piece, frames - *count);
        std::uint32_t read = 0;
        std::exception_ptr failure;
        try {
            Read(isSame ? next : bytes_.get(), wanted * from, &read);
        } catch (...) {
            // What came before is delivered.
            failure = std::current_exception();
        }
        const std::size_t got = read / from;
        if constexpr (!isSame) convert(next, bytes_.get(), got);
        next += got * size;
        *count += static_cast<std::uint32_t>(got);
        if (failure) std::rethrow_exception(failure);
        isMore = got == wanted;
    }
}

void CStreamObject::ReadFrames(std::uint32_t sampleFormat, void* samples, std::uint32_t frames,
                               std::uint32_t* count) {
    const TDataFormat_AudioPcm format = GetPcm();
    const std::size_t size = std::size_t{GetBufferSampleSize(sampleFormat)} * format.channels;
    if (sampleFormat == format.sampleFormat) return ReadPieces(format, samples, size, frames, count, nullptr);
    const TAudioConversion conversion{
        .from = format.sampleFormat, .to = sampleFormat, .channels = format.channels};
    ReadPieces(format, samples, size, frames, count,
               [&](std::byte* to, const std::byte* from, std::size_t got) {
                   ConvertAudio(to, from, got, conversion);
               });
}

void CStreamObject::ReadDoubles(double* samples, std::uint32_t frames, std::uint32_t* count) {
    const TDataFormat_AudioPcm format = GetPcm();
    ReadPieces(format, samples, sizeof(double) * format.channels, frames, count,
               [&](std::byte* to, const std::byte* from, std::size_t got) {
                   ConvertToDoubles(reinterpret_cast<double*>(to), from, format.sampleFormat,
                                    got * format.channels);
               });
}

TDataFormat_AudioPcm TakeFormat(const vorlund_audio_format* format) {
    const vorlund_audio_format taken = TakeRecord(format, kFormatRecord);
    Require(taken.sample_format <= VORLUND_SAMPLE_FLOAT, "Unknown sample format");
    Require(taken.channels > 0 && taken.channels <= 1024, "There must be 1 to 1024 channels");
    return {taken.sample_format, taken.channels, taken.rate};
}

void GiveFormat(const TDataFormat_AudioPcm& format, vorlund_audio_format* record) {
    const vorlund_audio_format full{sizeof(full), format.sampleFormat, format.channels, format.samplesPerSec};
    GiveRecord(full, record, kFormatRecord);
}

void GiveId(const CId& id, std::uint32_t* words) {
    RequirePointer(words);
    for (std::size_t i = 0; i < 4; ++i) words[i] = id.GetWord(i);
}

CId TakeId(const std::uint32_t* words) {
    RequirePointer(words);
    return {words[0], words[1], words[2], words[3]};
}

} // namespace vorlund::capi
