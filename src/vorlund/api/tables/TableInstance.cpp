#include "vorlund/api/tables/TableInstance.h"

#include "vorlund/api/text/TextFormat.h"

#include <vorlund/DataFormat.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace vorlund::tables {
namespace {

// The records of the table are those of the library.
static_assert(sizeof(vorlund_plugin_audio) == sizeof(TDataFormat_AudioPcm) &&
              sizeof(vorlund_plugin_image) == sizeof(TDataFormat_ImageRgb) &&
              sizeof(vorlund_plugin_video) == sizeof(TDataFormat_VideoRgb));

constexpr std::uint32_t kMaxBits = 128;

bool IsProper(const vorlund_plugin_audio& audio) {
    return audio.size == sizeof audio && audio.sample_format <= VORLUND_PLUGIN_SAMPLES_FLOAT &&
           audio.channels >= 1 && audio.channels <= 255 && audio.samples_per_sec > 0;
}

bool IsProper(const vorlund_plugin_image& image) {
    return image.size == sizeof image && image.pixels.bits_per_pixel >= 1 &&
           image.pixels.bits_per_pixel <= kMaxBits && image.width > 0 && image.height > 0;
}

bool IsProper(const vorlund_plugin_video& video) {
    return video.size == sizeof video && ToId(video.image.id) == TDataFormat_ImageRgb::FormatId &&
           IsProper(video.image) && std::isfinite(video.frame_rate) && video.frame_rate >= 0;
}

bool IsProper(const vorlund_plugin_format& format) {
    const CId id = ToId(format.head.id);
    if (id == TDataFormat_AudioPcm::FormatId) return IsProper(format.audio);
    if (id == TDataFormat_ImageRgb::FormatId) return IsProper(format.image);
    if (id == TDataFormat_VideoRgb::FormatId) return IsProper(format.video);
    return format.head.size >= sizeof format.head && format.head.size <= sizeof format;
}

} // namespace

wstring CheckFormat(const vorlund_plugin_format& format, const CId& wanted) {
    if (ToId(format.head.id) != wanted) return VRL_L("Decoder made another format than it is registered for");
    if (!IsProper(format)) return VRL_L("Decoder made an impossible format");
    return {};
}

CTableInstance::CTableInstance(TClassPtr tableClass, CRefPtr<IInputStream> stream)
    : class_(std::move(tableClass)), input_(std::move(stream)) {}

CTableInstance::~CTableInstance() {
    if (!isOpen_ || !IsAlive()) return;
    const CTableInput::CUse use(input_);
    class_->decoder.close(opened_.instance);
}

/// Makes one call, and sees to what the input has kept.
template <class TCall> TAnswer CTableInstance::Run(TCall call) {
    TAnswer answer;
    {
        const CTableInput::CUse use(input_);
        answer.code = call();
    }
    if (answer.code == VORLUND_PLUGIN_OK) return answer;
    input_.Raise(answer.code);
    answer.reason = input_.GetReason();
    return answer;
}

TAnswer CTableInstance::Open() {
    const vorlund_plugin_decoder& decoder = class_->decoder;
    const vorlund_plugin_decoder* const record = class_->decoderRecord;
    input_.Rewind();
    if (decoder.recognise) {
        TAnswer answer = Run([&] { return decoder.recognise(record, input_.Get()); });
        if (answer.code != VORLUND_PLUGIN_OK) return answer;
        input_.Rewind();
    }
    // The plug-in may keep the address, so what it has filled in is copied.
    vorlund_plugin_opened filled = {};
    filled.size = sizeof filled;
    if (decoder.instance_size > 0) block_ = std::make_unique<std::byte[]>(decoder.instance_size);
    filled.instance = block_.get();
    TAnswer answer = Run([&] { return decoder.open(record, input_.Get(), &filled); });
    if (answer.code != VORLUND_PLUGIN_OK) return answer;
    opened_ = filled;
    if (block_) opened_.instance = block_.get();
    isOpen_ = true;
    answer.reason = CheckFormat(opened_.format, ToId(decoder.result_format));
    if (!answer.reason.empty()) answer.code = VORLUND_PLUGIN_FAILED;
    return answer;
}

TAnswer CTableInstance::Read(void* buffer, std::uint32_t size, std::uint32_t& count) {
    std::uint32_t told = 0;
    TAnswer answer = Run([&] { return class_->decoder.read(opened_.instance, buffer, size, &told); });
    // There cannot be more, whatever it tells.
    count = answer.code == VORLUND_PLUGIN_OK ? std::min(told, size) : 0;
    return answer;
}

TAnswer CTableInstance::Seek(std::int64_t position) {
    return Run([&] { return class_->decoder.seek(opened_.instance, &position); });
}

} // namespace vorlund::tables
