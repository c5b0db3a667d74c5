/* Frames of sound in memory. */
#define _DEFAULT_SOURCE
#include "engine.h"

#include <stdint.h>
#include <stdlib.h>

#ifdef __linux__
#include <sys/mman.h>
#endif

/* Bytes that are read at a time, and the first room for a sound whose length a file only claims. */
#define PIECE ((uint64_t)1 << 28)
#define FIRST_ROOM ((uint64_t)1 << 26)
#define DOUBLES 8192
/* Bytes from which large pages pay. */
#define LARGE ((size_t)1 << 22)

static uint64_t least(uint64_t a, uint64_t b) {
    return a < b ? a : b;
}

static uint64_t sample_size(uint32_t format) {
    switch (format) {
    case VORLUND_SAMPLE_8BIT:
        return 1;
    case VORLUND_SAMPLE_16BIT:
        return 2;
    case ENGINE_DOUBLE:
        return 8;
    default:
        return 4;
    }
}

/* Frames that are mixed into another number of channels, such that nothing gets louder than full scale. */
static int32_t fill_mixed(vorlund_stream stream, uint32_t sample_format, uint32_t from, uint32_t channels,
                          char* to, uint64_t frames, uint64_t* count) {
    float own[DOUBLES];
    float mixed[DOUBLES];
    const uint32_t room = DOUBLES / (from > channels ? from : channels);
    uint32_t got = 0;
    int32_t code = VORLUND_OK;
    do {
        code = vorlund_stream_read_float(stream, own, (uint32_t)least(room, frames - *count), &got);
        const uint32_t samples = got * channels;
        ENGINE_TRY(vorlund_mix_samples(mixed, channels, own, from, got));
        if (sample_format == ENGINE_DOUBLE) {
            for (uint32_t i = 0; i < samples; ++i) ((double*)to)[i] = mixed[i];
        } else {
            ENGINE_TRY(
                vorlund_convert_samples(to, sample_format, mixed, VORLUND_SAMPLE_FLOAT, 1, samples, NULL));
        }
        to += samples * sample_size(sample_format);
        *count += got;
    } while (code == VORLUND_OK && got > 0 && *count < frames);
    return code;
}

int32_t engine_fill(vorlund_stream stream, uint32_t sample_format, uint32_t native_channels, uint32_t channels,
                    void* samples, uint64_t frames, uint64_t* count) {
    *count = 0;
    if (frames == 0) return VORLUND_OK;
    if (native_channels != channels)
        return fill_mixed(stream, sample_format, native_channels, channels, samples, frames, count);
    const uint64_t frame = sample_size(sample_format) * channels;
    char* to = samples;
    while (*count < frames) {
        uint32_t got = 0;
        const uint32_t wanted = (uint32_t)least(frames - *count, PIECE / frame);
        const int32_t code = sample_format == ENGINE_DOUBLE
                                 ? vorlund_stream_read_double(stream, (double*)to, wanted, &got)
                                 : vorlund_stream_read_frames(stream, sample_format, to, wanted, &got);
        *count += got;
        to += got * frame;
        if (code != VORLUND_OK) return code;
        if (got < wanted) break;
    }
    return VORLUND_OK;
}

int32_t engine_go_to(vorlund_stream stream, uint64_t frame) {
    vorlund_audio_format format = {sizeof format, 0, 0, 0};
    uint64_t all = 0;
    /* What is behind the end is the end. */
    if (vorlund_stream_frames(stream, &all) == VORLUND_OK) frame = least(frame, all);
    int32_t code = vorlund_stream_seek_frame_ptr(stream, &frame);
    if (code != VORLUND_ERROR_NOT_SUPPORTED) return code;
    uint64_t at = 0;
    float piece[DOUBLES];
    uint32_t got = 0;
    ENGINE_TRY(vorlund_stream_audio_format(stream, &format));
    ENGINE_TRY(vorlund_stream_tell_frame(stream, &at));
    if (frame < at) return code;
    do {
        const uint32_t wanted = (uint32_t)least(DOUBLES / format.channels, frame - at);
        ENGINE_TRY(vorlund_stream_read_float(stream, piece, wanted, &got));
        at += got;
    } while (got > 0 && at < frame);
    return VORLUND_OK;
}

/* Memory for samples, or a larger piece of it. The system gives large pages for much of it, if it can: a fault for
 * each small one would cost more than the samples. */
static char* allocate(void* before, size_t size) {
    char* const memory = realloc(before, size > 0 ? size : 1);
#ifdef MADV_HUGEPAGE
    if (memory && size >= LARGE) {
        const size_t page = 4096;
        const size_t skipped = page - (uintptr_t)memory % page;
        (void)madvise(memory + skipped, (size - skipped) & ~(page - 1), MADV_HUGEPAGE);
    }
#endif
    return memory;
}

/* Reads up to `frames`, into room that grows with what there is. */
static int32_t read_all(const engine_sound* sound, uint32_t sample_format, uint64_t frames,
                        engine_array* array) {
    const uint64_t frame = sample_size(sample_format) * sound->channels;
    uint64_t room = FIRST_ROOM / frame;
    array->frames = 0;
    array->channels = sound->channels;
    array->rate = sound->rate;
    array->sample_format = sample_format;
    if (!sound->has_frames && room > 65536) room = 65536;
    for (;;) {
        uint64_t got = 0;
        if (room > frames) room = frames;
        if (room > SIZE_MAX / frame) return VORLUND_ERROR_OUT_OF_MEMORY;
        char* const larger = allocate(array->samples, (size_t)(room * frame));
        if (!larger) return VORLUND_ERROR_OUT_OF_MEMORY;
        array->samples = larger;
        ENGINE_TRY(engine_fill(sound->stream, sample_format, sound->native_channels, sound->channels, larger + array->frames * frame,
                               room - array->frames, &got));
        array->frames += got;
        if (array->frames < room || room == frames) break;
        room = room > UINT64_MAX / 2 ? UINT64_MAX : room * 2;
    }
    if (array->frames < room && array->frames > 0) {
        void* const smaller = realloc(array->samples, (size_t)(array->frames * frame));
        if (smaller) array->samples = smaller;
    }
    return VORLUND_OK;
}

/* Floats of any samples that are not doubles, back into those of `array`. */
static int32_t change_samples(uint32_t sample_format, engine_array* array) {
    const uint64_t count = array->frames * array->channels;
    if (sample_format == array->sample_format) return VORLUND_OK;
    const uint64_t size = sample_size(sample_format);
    char* const changed = count <= SIZE_MAX / size ? allocate(NULL, (size_t)(count * size)) : NULL;
    if (!changed) return VORLUND_ERROR_OUT_OF_MEMORY;
    const float* const from = array->samples;
    int32_t code = VORLUND_OK;
    if (sample_format == ENGINE_DOUBLE) {
        for (uint64_t i = 0; i < count; ++i) ((double*)changed)[i] = from[i];
    } else {
        for (uint64_t at = 0; at < count && code == VORLUND_OK; at += PIECE)
            code = vorlund_convert_samples(changed + at * size, sample_format, from + at,
                                           VORLUND_SAMPLE_FLOAT, 1, (uint32_t)least(PIECE, count - at), NULL);
    }
    free(array->samples);
    array->samples = changed;
    array->sample_format = sample_format;
    return code;
}

int32_t engine_resample(const float* samples, uint64_t frames, uint32_t channels, uint32_t from_rate,
                        uint32_t to_rate, uint32_t quality, engine_array* array) {
    uint64_t count = 0;
    ENGINE_TRY(vorlund_resampled_frames(frames, from_rate, to_rate, &count));
    const uint64_t frame = sizeof(float) * channels;
    if (frames > UINT32_MAX || count > UINT32_MAX || count > SIZE_MAX / frame)
        return VORLUND_ERROR_OUT_OF_MEMORY;
    array->samples = allocate(NULL, (size_t)(count * frame));
    if (!array->samples) return VORLUND_ERROR_OUT_OF_MEMORY;
    array->frames = count;
    array->channels = channels;
    array->rate = to_rate;
    array->sample_format = VORLUND_SAMPLE_FLOAT;
    return vorlund_resample(array->samples, (uint32_t)count, samples, (uint32_t)frames, channels, from_rate,
                            to_rate, quality);
}

static int32_t read_sound(const engine_sound* sound, const engine_wanted* wanted, engine_array* array) {
    uint32_t format = wanted->sample_format;
    if (format == VORLUND_SAMPLE_KEEP) format = sound->sample_format;
    uint64_t frames = wanted->frames;
    if (sound->has_frames) frames = least(frames, sound->frames - least(sound->frames, wanted->start));
    if (wanted->rate == 0 || wanted->rate == sound->rate) return read_all(sound, format, frames, array);
    ENGINE_TRY(read_all(sound, VORLUND_SAMPLE_FLOAT, frames, array));
    engine_array resampled = {NULL, 0, 0, 0, 0};
    const int32_t code = engine_resample(array->samples, array->frames, array->channels, array->rate,
                                         wanted->rate, wanted->quality, &resampled);
    free(array->samples);
    *array = resampled;
    return code == VORLUND_OK ? change_samples(format, array) : code;
}

/* A report takes a tenth of the time of a short sound, so what fails is opened once more for it. An object may
 * not give its bytes twice. */
static int32_t open_to_read(const engine_source* source, const engine_wanted* wanted, engine_sound* sound,
                            vorlund_report* report) {
    if (!source->object && engine_open(source, wanted, sound, NULL) == VORLUND_OK) return VORLUND_OK;
    return engine_open(source, wanted, sound, report);
}

int32_t engine_read(const engine_source* source, const engine_wanted* wanted, engine_array* array,
                    vorlund_report* report) {
    engine_sound sound;
    engine_wanted at_own_rate = *wanted;
    at_own_rate.rate = 0;
    array->samples = NULL;
    ENGINE_TRY(open_to_read(source, &at_own_rate, &sound, report));
    const int32_t code = read_sound(&sound, wanted, array);
    vorlund_release(sound.stream);
    if (code != VORLUND_OK) {
        free(array->samples);
        array->samples = NULL;
    }
    return code;
}

int32_t engine_read_file(const char* path, const engine_wanted* wanted, engine_array* array,
                         vorlund_report* report) {
    const engine_source source = {path, NULL, 0, NULL};
    return engine_read(&source, wanted, array, report);
}

static int32_t find_peaks(const engine_sound* sound, uint32_t count, float* peaks) {
    float piece[DOUBLES];
    const uint32_t channels = sound->channels;
    uint64_t at = 0;
    for (uint32_t i = 0; i < count; ++i) {
        float* const pair = peaks + (size_t)2 * channels * i;
        /* Rounded by halves, so that it holds for any length. */
        const uint64_t end = sound->frames / count * (i + 1) + sound->frames % count * (i + 1) / count;
        int is_first = 1;
        while (at < end) {
            uint64_t got = 0;
            ENGINE_TRY(engine_fill(sound->stream, VORLUND_SAMPLE_FLOAT, sound->native_channels, channels, piece,
                                   least(DOUBLES / channels, end - at), &got));
            if (got == 0) return VORLUND_OK;
            for (uint64_t frame = 0; frame < got; ++frame, is_first = 0) {
                for (uint32_t channel = 0; channel < channels; ++channel) {
                    const float sample = piece[frame * channels + channel];
                    float* const low = pair + (size_t)2 * channel;
                    if (is_first || sample < low[0]) low[0] = sample;
                    if (is_first || sample > low[1]) low[1] = sample;
                }
            }
            at += got;
        }
    }
    return VORLUND_OK;
}

int32_t engine_peaks(const engine_source* source, uint32_t channels, uint32_t count, engine_array* array,
                     vorlund_report* report) {
    const engine_wanted wanted = {0, UINT64_MAX, VORLUND_SAMPLE_FLOAT, channels, 0, VORLUND_QUALITY_HIGH};
    engine_sound sound;
    array->samples = NULL;
    ENGINE_TRY(engine_open(source, &wanted, &sound, report));
    int32_t code = vorlund_stream_frames(sound.stream, &sound.frames);
    if (code == VORLUND_OK) {
        array->frames = least(count, sound.frames);
        array->channels = sound.channels;
        array->rate = sound.rate;
        array->sample_format = VORLUND_SAMPLE_FLOAT;
        array->samples =
            calloc(array->frames > 0 ? (size_t)array->frames : 1, (size_t)2 * sound.channels * sizeof(float));
        code = array->samples ? find_peaks(&sound, (uint32_t)array->frames, array->samples)
                              : VORLUND_ERROR_OUT_OF_MEMORY;
    }
    vorlund_release(sound.stream);
    if (code != VORLUND_OK) {
        free(array->samples);
        array->samples = NULL;
    }
    return code;
}

int32_t engine_measure(const engine_source* source, vorlund_levels* levels, vorlund_report* report) {
    const engine_wanted wanted = {0, UINT64_MAX, VORLUND_SAMPLE_KEEP, 0, 0, VORLUND_QUALITY_HIGH};
    engine_sound sound;
    ENGINE_TRY(engine_open(source, &wanted, &sound, report));
    const int32_t code = vorlund_measure_stream(sound.stream, levels);
    vorlund_release(sound.stream);
    return code;
}

void engine_free(void* samples) {
    free(samples);
}
