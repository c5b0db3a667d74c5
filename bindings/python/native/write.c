/* Sound files that are written. */
#include "engine.h"

#define DOUBLES 8192

static int32_t prepare(const engine_plan* plan, vorlund_writer writer) {
    for (uint32_t i = 0; i < plan->option_count; ++i)
        ENGINE_TRY(vorlund_writer_option(writer, plan->options[i].name, plan->options[i].text));
    for (uint32_t i = 0; i < plan->tag_count; ++i)
        ENGINE_TRY(vorlund_writer_tag(writer, plan->tags[i].name, plan->tags[i].text));
    return VORLUND_OK;
}

static int32_t begin(const engine_target* target, const engine_plan* plan, engine_writer* writer) {
    const vorlund_audio_format format = {sizeof format, plan->sample_format, plan->channels, plan->rate};
    ENGINE_TRY(prepare(plan, writer->writer));
    if (target->path) return vorlund_writer_open_file(writer->writer, target->path, &format);
    vorlund_sink_callbacks callbacks = {sizeof callbacks, 0, python_write, python_seek, python_flush,
                                        python_release};
    ENGINE_TRY(vorlund_sink_create(&callbacks, target->object, &writer->sink));
    return vorlund_writer_open_sink(writer->writer, writer->sink, &format);
}

static void drop(engine_writer* writer) {
    vorlund_release(writer->writer);
    vorlund_release(writer->sink);
    writer->writer = NULL;
    writer->sink = NULL;
}

int32_t engine_writer_open(const engine_target* target, const engine_plan* plan, engine_writer* writer) {
    writer->writer = NULL;
    writer->sink = NULL;
    ENGINE_TRY(vorlund_writer_create(plan->kind, &writer->writer));
    const int32_t code = begin(target, plan, writer);
    if (code != VORLUND_OK) drop(writer);
    return code;
}

int32_t engine_writer_write(const engine_writer* writer, uint32_t sample_format, uint32_t channels,
                            const void* samples, uint64_t frames) {
    float floats[DOUBLES];
    const int is_double = sample_format == ENGINE_DOUBLE;
    const uint32_t width = sample_format == VORLUND_SAMPLE_8BIT    ? 1
                           : sample_format == VORLUND_SAMPLE_16BIT ? 2
                                                                   : 4;
    const uint64_t room = is_double ? DOUBLES / channels : ((uint64_t)1 << 28) / channels;
    uint64_t at = 0;
    while (at < frames) {
        const uint32_t count = (uint32_t)(frames - at < room ? frames - at : room);
        const void* piece = (const char*)samples + at * width * channels;
        if (is_double) {
            const double* const from = (const double*)samples + at * channels;
            for (uint32_t i = 0; i < count * channels; ++i) floats[i] = (float)from[i];
            piece = floats;
        }
        ENGINE_TRY(vorlund_writer_write_frames(
            writer->writer, is_double ? VORLUND_SAMPLE_FLOAT : sample_format, piece, count));
        at += count;
    }
    return VORLUND_OK;
}

int32_t engine_writer_finish(engine_writer* writer) {
    int32_t code = vorlund_writer_finish(writer->writer);
    if (code == VORLUND_OK && writer->sink) code = vorlund_sink_flush(writer->sink);
    drop(writer);
    return code;
}

int32_t engine_write(const engine_target* target, const engine_plan* plan, uint32_t sample_format,
                     const void* samples, uint64_t frames) {
    engine_writer writer;
    ENGINE_TRY(engine_writer_open(target, plan, &writer));
    const int32_t code = engine_writer_write(&writer, sample_format, plan->channels, samples, frames);
    if (code == VORLUND_OK) return engine_writer_finish(&writer);
    drop(&writer);
    return code;
}

/* Whatever is left of a sound, mixed where that is wanted. */
static int32_t copy_sound(const engine_sound* sound, const engine_writer* writer, uint64_t* frames) {
    float piece[DOUBLES];
    uint64_t got = 0;
    if (sound->native_channels == sound->channels)
        return vorlund_writer_write_stream(writer->writer, sound->stream, frames);
    *frames = 0;
    do {
        ENGINE_TRY(engine_fill(sound->stream, VORLUND_SAMPLE_FLOAT, sound->native_channels, sound->channels, piece,
                               DOUBLES / sound->channels, &got));
        ENGINE_TRY(engine_writer_write(writer, VORLUND_SAMPLE_FLOAT, sound->channels, piece, got));
        *frames += got;
    } while (got > 0);
    return VORLUND_OK;
}

int32_t engine_convert(const engine_source* source, const engine_target* target, const engine_plan* plan,
                       uint32_t quality, uint64_t* frames, vorlund_report* report) {
    const engine_wanted wanted = {0, UINT64_MAX, VORLUND_SAMPLE_KEEP, plan->channels, plan->rate, quality};
    engine_plan whole = *plan;
    engine_sound sound;
    engine_writer writer;
    ENGINE_TRY(engine_open(source, &wanted, &sound, report));
    if (whole.sample_format == VORLUND_SAMPLE_KEEP) whole.sample_format = sound.sample_format;
    whole.channels = sound.channels;
    whole.rate = sound.rate;
    int32_t code = engine_writer_open(target, &whole, &writer);
    if (code == VORLUND_OK) {
        code = copy_sound(&sound, &writer, frames);
        if (code == VORLUND_OK)
            code = engine_writer_finish(&writer);
        else
            drop(&writer);
    }
    vorlund_release(sound.stream);
    return code;
}
