/* Sources of bytes: memory without a copy, objects of Python, and sound over them. */
#include "engine.h"

#include <stdlib.h>
#include <string.h>

typedef struct memory {
    const unsigned char* bytes;
    uint64_t count;
    uint64_t at;
} memory;

static int32_t VORLUND_CALL memory_read(void* user, void* buffer, uint32_t size, uint32_t* count) {
    memory* const self = user;
    const uint64_t left = self->at < self->count ? self->count - self->at : 0;
    *count = left < size ? (uint32_t)left : size;
    if (*count > 0) memcpy(buffer, self->bytes + self->at, *count);
    self->at += *count;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL memory_seek(void* user, const int64_t* position) {
    memory* const self = user;
    if (*position < 0) return VORLUND_ERROR_ARGUMENT;
    self->at = (uint64_t)*position;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL memory_length(void* user, int64_t* length) {
    *length = (int64_t)((memory*)user)->count;
    return VORLUND_OK;
}

static void VORLUND_CALL memory_release(void* user) {
    free(user);
}

static int32_t memory_stream(memory* self, const vorlund_audio_format* format, vorlund_stream* stream) {
    vorlund_stream_callbacks callbacks = {sizeof callbacks, 0, memory_read, memory_seek, memory_length,
                                          memory_release};
    const int32_t code = vorlund_stream_create(&callbacks, self, format, stream);
    if (code != VORLUND_OK) free(self);
    return code;
}

int32_t engine_copy_stream(const void* samples, uint64_t count, const vorlund_audio_format* format,
                           vorlund_stream* stream) {
    memory* const self = count <= SIZE_MAX - sizeof(memory) ? malloc(sizeof(memory) + (size_t)count) : NULL;
    if (!self) return VORLUND_ERROR_OUT_OF_MEMORY;
    if (count > 0) memcpy(self + 1, samples, (size_t)count);
    self->bytes = (const unsigned char*)(self + 1);
    self->count = count;
    self->at = 0;
    return memory_stream(self, format, stream);
}

int32_t engine_bytes(const engine_source* source, vorlund_stream* stream) {
    if (source->object) {
        vorlund_stream_callbacks callbacks = {sizeof callbacks, 0, python_read, python_seek, python_length,
                                              python_release};
        return vorlund_stream_create(&callbacks, source->object, NULL, stream);
    }
    memory* const self = malloc(sizeof *self);
    if (!self) return VORLUND_ERROR_OUT_OF_MEMORY;
    self->bytes = source->bytes;
    self->count = source->count;
    self->at = 0;
    return memory_stream(self, NULL, stream);
}

static int32_t decode(const engine_source* source, vorlund_stream* stream, vorlund_report* report) {
    if (source->path) return vorlund_decode_file(source->path, NULL, NULL, report, stream);
    vorlund_stream bytes = NULL;
    ENGINE_TRY(engine_bytes(source, &bytes));
    const int32_t code = vorlund_decode_stream(bytes, NULL, NULL, report, stream);
    vorlund_release(bytes);
    return code;
}

/* Puts a stream of another rate in the place of one. */
static int32_t change_rate(const engine_wanted* wanted, vorlund_stream* stream) {
    vorlund_conversion conversion = {sizeof conversion, VORLUND_SAMPLE_FLOAT, 0, 0, 0, 0, 0, 0, 0};
    conversion.rate = wanted->rate;
    conversion.quality = wanted->quality;
    vorlund_stream changed = NULL;
    ENGINE_TRY(vorlund_convert_stream(*stream, &conversion, &changed));
    vorlund_release(*stream);
    *stream = changed;
    return VORLUND_OK;
}

static int32_t describe(const engine_wanted* wanted, engine_sound* sound) {
    vorlund_audio_format format = {sizeof format, 0, 0, 0};
    ENGINE_TRY(vorlund_stream_audio_format(sound->stream, &format));
    if (format.channels == 0 || format.channels > ENGINE_CHANNELS) return VORLUND_ERROR_DATA_NOT_SUPPORTED;
    if (wanted->channels != 0 && wanted->channels != format.channels && format.channels > 8)
        return VORLUND_ERROR_DATA_NOT_SUPPORTED;
    if (wanted->rate != 0 && wanted->rate != format.rate) {
        ENGINE_TRY(change_rate(wanted, &sound->stream));
        ENGINE_TRY(vorlund_stream_audio_format(sound->stream, &format));
    }
    sound->sample_format = format.sample_format;
    sound->channels = wanted->channels != 0 ? wanted->channels : format.channels;
    sound->native_channels = format.channels;
    sound->rate = format.rate;
    sound->frames = 0;
    sound->has_frames = vorlund_stream_frames(sound->stream, &sound->frames) == VORLUND_OK;
    return wanted->start == 0 ? VORLUND_OK : engine_go_to(sound->stream, wanted->start);
}

int32_t engine_open(const engine_source* source, const engine_wanted* wanted, engine_sound* sound,
                    vorlund_report* report) {
    sound->stream = NULL;
    ENGINE_TRY(decode(source, &sound->stream, report));
    const int32_t code = describe(wanted, sound);
    if (code != VORLUND_OK) {
        vorlund_release(sound->stream);
        sound->stream = NULL;
    }
    return code;
}
