// Playing and recording.

#include "vorlund_c/audio.h"

#include "AudioObject.h"
#include "Calls.h"
#include "Records.h"
#include "Texts.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/Each.h>
#include <vorlund/EventWaits.h>
#include <vorlund/Exception.h>

namespace vorlund::capi {

namespace {

CRefPtr<IAudioSystem> MakeSystem() {
    auto system = CreateAs<IAudioSystem>(kAudioSystemClassId);
    if (!system) throw CFailure(VORLUND_ERROR_CLASS_NOT_FOUND, "The class is none of an audio system");
    return system;
}

class CDeviceListObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::DeviceList;

    explicit CDeviceListObject(TAudioDirection direction) : CHandleObject(Kind) {
        chain_ = std::make_shared<CChain>();
        const auto system = MakeSystem();
        for (const CRefPtr<IAudioDeviceInfo>& device :
             Each<IAudioDeviceInfo>(system->EnumerateDevices(direction)))
            devices_.emplace_back(device);
    }

    std::size_t GetCount() const { return devices_.size(); }
    IAudioDeviceInfo& At(std::uint32_t index) const {
        Require(index < devices_.size(), "There is no such device");
        return *devices_[index];
    }

private:
    std::vector<CSafeRefPtr<IAudioDeviceInfo>> devices_;
};

template <class TUnit>
std::int32_t CreateOutput(const char* function, const TUnit* id, vorlund_output* output) {
    return Guarded(function, [&] {
        RequirePointer(output);
        const wstring name = TakeTextOrNone(id);
        MakeHandle<COutputObject>(output,
                                  CRefPtr<IAudioOutput>::Adopt(MakeSystem()->CreateOutput(name.c_str())));
    });
}

template <class TUnit>
std::int32_t CreateFileOutput(const char* function, const TUnit* path, vorlund_output* output) {
    return Guarded(function, [&] {
        RequirePointer(output);
        const wstring name = TakePath(path);
        MakeHandle<COutputObject>(output, CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(name.c_str())));
    });
}

template <class TUnit> std::int32_t CreateInput(const char* function, const TUnit* id, vorlund_input* input) {
    return Guarded(function, [&] {
        RequirePointer(input);
        const wstring name = TakeTextOrNone(id);
        MakeHandle<CInputObject>(input, CRefPtr<IAudioInput>::Adopt(MakeSystem()->CreateInput(name.c_str())));
    });
}

template <class TUnit>
std::int32_t GiveDeviceText(const char* function, vorlund_device_list list, std::uint32_t index,
                            std::int32_t field, TUnit* text, std::uint32_t room, std::uint32_t* length) {
    return On<CDeviceListObject>(function, list, [&](CDeviceListObject& object) {
        IAudioDeviceInfo& device = object.At(index);
        Require(field == VORLUND_DEVICE_TEXT_ID || field == VORLUND_DEVICE_TEXT_NAME,
                "There is no such text");
        GiveText(field == VORLUND_DEVICE_TEXT_ID ? device.GetId() : device.GetName(), text, room, length);
    });
}

template <class TUnit>
std::int32_t GiveStreamError(const char* function, vorlund_output output, TUnit* text, std::uint32_t room,
                             std::uint32_t* length) {
    return On<COutputObject>(function, output, [&](COutputObject& object) {
        wchar line[1024];
        object.Get().GetStreamError(line, static_cast<std::uint32_t>(std::size(line)));
        GiveText(static_cast<const wchar*>(line), text, room, length);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;

int32_t VORLUND_CALL vorlund_device_list_create(int32_t kind, vorlund_device_list* list) {
    return Guarded(__func__, [&] {
        RequirePointer(list);
        Require(kind >= VORLUND_DEVICE_OUTPUT && kind <= VORLUND_DEVICE_LOOPBACK,
                "There is no such kind of device");
        MakeHandle<CDeviceListObject>(list, static_cast<vorlund::TAudioDirection>(kind));
    });
}

int32_t VORLUND_CALL vorlund_device_list_count(vorlund_device_list list, uint32_t* count) {
    return Ask<CDeviceListObject>(__func__, list, count,
                                  [](CDeviceListObject& object) { return object.GetCount(); });
}

int32_t VORLUND_CALL vorlund_device_list_get(vorlund_device_list list, uint32_t index,
                                             vorlund_device_info* info) {
    return On<CDeviceListObject>(__func__, list, [&](CDeviceListObject& object) {
        vorlund::IAudioDeviceInfo& device = object.At(index);
        vorlund_device_info full{};
        full.kind = static_cast<int32_t>(device.GetDirection());
        full.is_default = device.IsDefault() ? 1 : 0;
        full.channels = device.GetChannels();
        full.rate = device.GetSamplesPerSec();
        GiveRecord(full, info, sizeof(full));
    });
}

int32_t VORLUND_CALL vorlund_device_list_text(vorlund_device_list list, uint32_t index, int32_t field,
                                              char* text, uint32_t room, uint32_t* length) {
    return GiveDeviceText(__func__, list, index, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_device_list_text16(vorlund_device_list list, uint32_t index, int32_t field,
                                                uint16_t* text, uint32_t room, uint32_t* length) {
    return GiveDeviceText(__func__, list, index, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_output_create(const char* id, vorlund_output* output) {
    return CreateOutput(__func__, id, output);
}

int32_t VORLUND_CALL vorlund_output_create16(const uint16_t* id, vorlund_output* output) {
    return CreateOutput(__func__, id, output);
}

int32_t VORLUND_CALL vorlund_output_create_null(vorlund_output* output) {
    return Guarded(__func__, [&] {
        RequirePointer(output);
        MakeHandle<COutputObject>(output,
                                  CRefPtr<vorlund::IAudioOutput>::Adopt(vorlund::CreateNullAudioOutput()));
    });
}

int32_t VORLUND_CALL vorlund_output_create_file(const char* path, vorlund_output* output) {
    return CreateFileOutput(__func__, path, output);
}

int32_t VORLUND_CALL vorlund_output_create_file16(const uint16_t* path, vorlund_output* output) {
    return CreateFileOutput(__func__, path, output);
}

int32_t VORLUND_CALL vorlund_output_open(vorlund_output output, const vorlund_audio_format* format,
                                         double latency) {
    return On<COutputObject>(__func__, output, [&](COutputObject& object) {
        object.Get().OpenOutput(TakeFormat(format), latency);
        object.FreeEnded();
    });
}

int32_t VORLUND_CALL vorlund_output_close(vorlund_output output) {
    return On<COutputObject>(__func__, output, [](COutputObject& object) {
        object.Get().Close();
        object.FreeEnded();
    });
}

int32_t VORLUND_CALL vorlund_output_write(vorlund_output output, const void* bytes, uint32_t count,
                                          uint32_t* written) {
    return On<COutputObject>(__func__, output, [&](COutputObject& object) {
        RequireBuffer(bytes, count);
        const uint64_t queued = object.Get().Write(bytes, count);
        if (written) *written = static_cast<uint32_t>(queued);
    });
}

int32_t VORLUND_CALL vorlund_output_writable(vorlund_output output, uint64_t* count) {
    return Ask<COutputObject>(__func__, output, count,
                              [](COutputObject& object) { return object.Get().GetWritable(); });
}

int32_t VORLUND_CALL vorlund_output_play(vorlund_output output, vorlund_stream stream) {
    return On<COutputObject>(__func__, output, [&](COutputObject& object) { object.Play(stream); });
}

int32_t VORLUND_CALL vorlund_output_streams(vorlund_output output, uint32_t* count) {
    return Ask<COutputObject>(__func__, output, count,
                              [](COutputObject& object) { return object.FreeEnded(); });
}

int32_t VORLUND_CALL vorlund_output_wait_streams(vorlund_output output, int32_t milliseconds) {
    return On<COutputObject>(__func__, output, [&](COutputObject& object) {
        const vorlund::CEvent* const idle = &object.Get().GetIdleEvent();
        const uint32_t result = vorlund::WaitForEvents(&idle, 1, true, milliseconds);
        object.FreeEnded();
        if (result != 0) throw CFailure(VORLUND_ERROR_TIMEOUT, "Timeout");
    });
}

int32_t VORLUND_CALL vorlund_output_stream_error(vorlund_output output, char* text, uint32_t room,
                                                 uint32_t* length) {
    return GiveStreamError(__func__, output, text, room, length);
}

int32_t VORLUND_CALL vorlund_output_stream_error16(vorlund_output output, uint16_t* text, uint32_t room,
                                                   uint32_t* length) {
    return GiveStreamError(__func__, output, text, room, length);
}

int32_t VORLUND_CALL vorlund_output_drain(vorlund_output output, int32_t* is_drained) {
    return On<COutputObject>(__func__, output, [&](COutputObject& object) {
        const bool isDrained = object.Get().Drain();
        if (is_drained) *is_drained = isDrained ? 1 : 0;
        object.FreeEnded();
    });
}

int32_t VORLUND_CALL vorlund_output_flush(vorlund_output output) {
    return On<COutputObject>(__func__, output, [](COutputObject& object) {
        object.Get().Flush();
        object.FreeEnded();
    });
}

int32_t VORLUND_CALL vorlund_output_set_paused(vorlund_output output, int32_t is_paused) {
    return On<COutputObject>(__func__, output,
                             [&](COutputObject& object) { object.Get().SetPaused(is_paused != 0); });
}

int32_t VORLUND_CALL vorlund_output_set_volume(vorlund_output output, float volume) {
    return On<COutputObject>(__func__, output,
                             [&](COutputObject& object) { object.Get().SetVolume(volume); });
}

int32_t VORLUND_CALL vorlund_output_volume(vorlund_output output, float* volume) {
    return Ask<COutputObject>(__func__, output, volume,
                              [](COutputObject& object) { return object.Get().GetVolume(); });
}

int32_t VORLUND_CALL vorlund_output_position(vorlund_output output, uint64_t* frames) {
    return Ask<COutputObject>(__func__, output, frames,
                              [](COutputObject& object) { return object.Get().GetPosition(); });
}

int32_t VORLUND_CALL vorlund_output_delay(vorlund_output output, uint64_t* frames) {
    return Ask<COutputObject>(__func__, output, frames,
                              [](COutputObject& object) { return object.Get().GetDelay(); });
}

int32_t VORLUND_CALL vorlund_output_xruns(vorlund_output output, uint64_t* count) {
    return Ask<COutputObject>(__func__, output, count,
                              [](COutputObject& object) { return object.Get().GetXruns(); });
}

int32_t VORLUND_CALL vorlund_output_state(vorlund_output output, int32_t* state) {
    return Ask<COutputObject>(__func__, output, state,
                              [](COutputObject& object) { return object.Get().GetState(); });
}

int32_t VORLUND_CALL vorlund_output_device_format(vorlund_output output, vorlund_audio_format* format) {
    return On<COutputObject>(
        __func__, output, [&](COutputObject& object) { GiveFormat(object.Get().GetDeviceFormat(), format); });
}

int32_t VORLUND_CALL vorlund_output_latency(vorlund_output output, double* seconds) {
    return Ask<COutputObject>(__func__, output, seconds,
                              [](COutputObject& object) { return object.Get().GetLatency(); });
}

int32_t VORLUND_CALL vorlund_input_create(const char* id, vorlund_input* input) {
    return CreateInput(__func__, id, input);
}

int32_t VORLUND_CALL vorlund_input_create16(const uint16_t* id, vorlund_input* input) {
    return CreateInput(__func__, id, input);
}

int32_t VORLUND_CALL vorlund_input_create_null(vorlund_input* input) {
    return Guarded(__func__, [&] {
        RequirePointer(input);
        MakeHandle<CInputObject>(input,
                                 CRefPtr<vorlund::IAudioInput>::Adopt(vorlund::CreateNullAudioInput()));
    });
}

int32_t VORLUND_CALL vorlund_input_open(vorlund_input input, const vorlund_audio_format* format,
                                        double latency) {
    return On<CInputObject>(
        __func__, input, [&](CInputObject& object) { object.Get().OpenInput(TakeFormat(format), latency); });
}

int32_t VORLUND_CALL vorlund_input_close(vorlund_input input) {
    return On<CInputObject>(__func__, input, [](CInputObject& object) { object.Get().Close(); });
}

int32_t VORLUND_CALL vorlund_input_get_stream(vorlund_input input, vorlund_stream* stream) {
    return On<CInputObject>(__func__, input, [&](CInputObject& object) {
        RequirePointer(stream);
        MakeHandle<CStreamObject>(stream, object.GetStream());
    });
}

int32_t VORLUND_CALL vorlund_input_readable(vorlund_input input, uint64_t* count) {
    return Ask<CInputObject>(__func__, input, count,
                             [](CInputObject& object) { return object.Get().GetReadable(); });
}

int32_t VORLUND_CALL vorlund_input_set_paused(vorlund_input input, int32_t is_paused) {
    return On<CInputObject>(__func__, input,
                            [&](CInputObject& object) { object.Get().SetPaused(is_paused != 0); });
}

int32_t VORLUND_CALL vorlund_input_stop(vorlund_input input) {
    return On<CInputObject>(__func__, input, [](CInputObject& object) { object.Get().Stop(); });
}

int32_t VORLUND_CALL vorlund_input_position(vorlund_input input, uint64_t* frames) {
    return Ask<CInputObject>(__func__, input, frames,
                             [](CInputObject& object) { return object.Get().GetPosition(); });
}

int32_t VORLUND_CALL vorlund_input_xruns(vorlund_input input, uint64_t* count) {
    return Ask<CInputObject>(__func__, input, count,
                             [](CInputObject& object) { return object.Get().GetXruns(); });
}

int32_t VORLUND_CALL vorlund_input_state(vorlund_input input, int32_t* state) {
    return Ask<CInputObject>(__func__, input, state,
                             [](CInputObject& object) { return object.Get().GetState(); });
}
