/* Sinks, writers and conversions. */
#include "Suite.h"

#include <fenv.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#ifdef __SSE__
#include <xmmintrin.h>
#endif

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

static void a_file_is_written(void) {
    vorlund_sink sink = NULL;
    vorlund_stream stream = NULL;
    uint16_t path[512];
    int64_t at = 2;
    char bytes[8] = {0};
    uint32_t count = 0;
    open_library();
    C_OK(vorlund_utf8_to_utf16(c_temporary_file(), path, 512, NULL));
    C_OK(vorlund_sink_open_file16(path, &sink));
    C_OK(vorlund_sink_write(sink, "abcdef", 6));
    C_OK(vorlund_sink_seek(sink, 1));
    C_OK(vorlund_sink_write(sink, "B", 1));
    C_OK(vorlund_sink_seek_ptr(sink, &at));
    C_OK(vorlund_sink_write(sink, "C", 1));
    C_OK(vorlund_sink_tell(sink, &at));
    C_CHECK(at == 3);
    C_OK(vorlund_sink_flush(sink));
    C_OK(vorlund_sink_length(sink, &at));
    C_CHECK(at == 6);
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_sink_get_memory(sink, NULL, NULL));
    C_OK(vorlund_sink_close(sink));
    C_CODE(VORLUND_ERROR_IO, vorlund_sink_write(sink, "x", 1));
    C_OK(vorlund_release(sink));
    C_OK(vorlund_stream_open_file(c_temporary_file(), &stream));
    C_OK(vorlund_stream_read(stream, bytes, 8, &count));
    C_CHECK(count == 6 && memcmp(bytes, "aBCdef", 6) == 0);
    C_OK(vorlund_release(stream));
    C_CODE(VORLUND_ERROR_FILE_ACCESS, vorlund_sink_open_file("no such folder/file", &sink));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_open_file(NULL, &sink));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_open_file("x", NULL));
}

static void memory_is_written(void) {
    vorlund_sink sink = NULL;
    const void* bytes = NULL;
    uint64_t count = 0;
    open_library();
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_open_memory(NULL));
    C_OK(vorlund_sink_open_memory(&sink));
    C_OK(vorlund_sink_write(sink, "memory", 6));
    C_OK(vorlund_sink_write(sink, NULL, 0));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_write(sink, NULL, 1));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_seek_ptr(sink, NULL));
    C_CODE(VORLUND_ERROR_IO, vorlund_sink_seek(sink, -1));
    C_OK(vorlund_sink_flush(sink));
    C_OK(vorlund_sink_get_memory(sink, &bytes, &count));
    C_CHECK(count == 6 && memcmp(bytes, "memory", 6) == 0);
    C_OK(vorlund_release(sink));
}

/* A sink of the program, into memory of its own, with faults. */
struct target {
    unsigned char bytes[4096];
    int64_t position;
    int64_t size;
    int32_t code;
    int flushes;
    int releases;
    vorlund_sink sink;
    vorlund_writer writer;
    int frees;
    int32_t codes[3];
};

static int32_t VORLUND_CALL write_target(void* user, const void* bytes, uint32_t count) {
    struct target* const target = (struct target*)user;
    if (target->frees) {
        target->frees = 0;
        target->codes[0] = vorlund_writer_write(target->writer, "xxxx", 4);
        target->codes[1] = vorlund_release(target->writer);
        target->codes[2] = vorlund_release(target->sink);
    }
    if (target->code) return target->code;
    if (target->position + count > (int64_t)sizeof(target->bytes)) return 28;
    memcpy(target->bytes + target->position, bytes, count);
    target->position += count;
    if (target->size < target->position) target->size = target->position;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL seek_target(void* user, const int64_t* position) {
    ((struct target*)user)->position = *position;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL flush_target(void* user) {
    struct target* const target = (struct target*)user;
    ++target->flushes;
    return target->code;
}

static void VORLUND_CALL release_target(void* user) {
    ++((struct target*)user)->releases;
}

static void make_target(struct target* target) {
    vorlund_sink_callbacks callbacks;
    memset(target, 0, sizeof(*target));
    memset(&callbacks, 0, sizeof(callbacks));
    callbacks.size = sizeof(callbacks);
    callbacks.write = write_target;
    callbacks.seek = seek_target;
    callbacks.flush = flush_target;
    callbacks.release = release_target;
    C_OK(vorlund_sink_create(&callbacks, target, &target->sink));
}

static void a_sink_of_the_program(void) {
    struct target target;
    vorlund_sink_callbacks callbacks;
    vorlund_error error;
    open_library();
    make_target(&target);
    C_OK(vorlund_sink_write(target.sink, "abc", 3));
    C_OK(vorlund_sink_flush(target.sink));
    C_CHECK(target.flushes >= 1 && memcmp(target.bytes, "abc", 3) == 0);
    target.code = 1234;
    C_CODE(VORLUND_ERROR_IO, vorlund_sink_write(target.sink, "abc", 3));
    error.size = sizeof(error);
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 1234);
    C_CODE(VORLUND_ERROR_IO, vorlund_sink_flush(target.sink));
    target.code = 0;
    C_OK(vorlund_sink_close(target.sink));
    C_OK(vorlund_release(target.sink));
    C_CHECK(target.releases == 1);
    memset(&callbacks, 0, sizeof(callbacks));
    callbacks.size = sizeof(callbacks);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_sink_create(&callbacks, &target, &target.sink));
    callbacks.size = 4;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_sink_create(&callbacks, &target, &target.sink));
}

static const int16_t samples[8] = {0, 1000, -1000, 32767, -32768, 5, 6, 7};

static void check_wav(vorlund_stream source) {
    vorlund_stream stream = NULL;
    vorlund_audio_format format;
    int16_t read[10] = {0};
    uint32_t count = 0;
    C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
    format.size = sizeof(format);
    C_OK(vorlund_stream_audio_format(stream, &format));
    C_CHECK(format.sample_format == VORLUND_SAMPLE_16BIT && format.channels == 2 && format.rate == 8000);
    C_OK(vorlund_stream_read_int16(stream, read, 5, &count));
    C_CHECK(count == 4 && memcmp(read, samples, sizeof(samples)) == 0);
    C_OK(vorlund_release(stream));
}

static void wav_files_are_written(void) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 2, 8000};
    vorlund_writer writer = NULL;
    vorlund_stream source = NULL;
    open_library();
    C_OK(vorlund_writer_create("wav", &writer));
    C_OK(vorlund_writer_tag(writer, "INAM", "Eight samples"));
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_writer_tag(writer, "title", "x"));
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_writer_option(writer, "quality", "1"));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_writer_write(writer, samples, 4));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_writer_finish(writer));
    C_OK(vorlund_writer_open_file(writer, c_temporary_file(), &format));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_writer_open_file(writer, c_temporary_file(), &format));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_writer_tag(writer, "INAM", "x"));
    C_OK(vorlund_writer_write(writer, samples, 6));
    C_OK(vorlund_writer_write(writer, (const char*)samples + 6, sizeof(samples) - 6));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_write(writer, NULL, 6));
    C_OK(vorlund_writer_finish(writer));
    C_OK(vorlund_writer_finish(writer));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_writer_write(writer, samples, 6));
    C_OK(vorlund_release(writer));
    C_OK(vorlund_stream_open_file(c_temporary_file(), &source));
    check_wav(source);
    C_OK(vorlund_release(source));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_create("tiff", &writer));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_create(NULL, &writer));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_create("wav", NULL));
}

static void wav_into_a_sink_by_frames(void) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 2, 8000};
    vorlund_audio_format wrong = {sizeof(wrong), 7, 2, 8000};
    static const uint16_t wav[] = {'w', 'a', 'v', 0};
    static const uint16_t name[] = {'I', 'A', 'R', 'T', 0};
    vorlund_writer writer = NULL;
    vorlund_sink sink = NULL;
    vorlund_stream source = NULL;
    const void* bytes = NULL;
    uint64_t count = 0;
    float floats[8];
    int i;
    open_library();
    for (i = 0; i < 8; ++i) floats[i] = (float)samples[i] / 32768.0f;
    C_OK(vorlund_sink_open_memory(&sink));
    C_OK(vorlund_writer_create16(wav, &writer));
    C_OK(vorlund_writer_tag16(writer, name, name));
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_writer_option16(writer, name, name));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_open_sink(writer, sink, &wrong));
    wrong.sample_format = 1;
    wrong.channels = 0;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_open_sink(writer, sink, &wrong));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_open_sink(writer, sink, NULL));
    C_OK(vorlund_writer_open_sink(writer, sink, &format));
    C_OK(vorlund_writer_write_frames(writer, VORLUND_SAMPLE_FLOAT, floats, 3));
    C_OK(vorlund_writer_write_frames(writer, VORLUND_SAMPLE_16BIT, samples + 6, 1));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_write_frames(writer, 5, floats, 1));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_write_frames(writer, 3, NULL, 1));
    C_OK(vorlund_writer_finish(writer));
    C_OK(vorlund_sink_get_memory(sink, &bytes, &count));
    C_OK(vorlund_stream_open_memory(bytes, (uint32_t)count, &source));
    check_wav(source);
    C_OK(vorlund_release(source));
    C_OK(vorlund_release(writer));
    C_OK(vorlund_release(sink));
}

static void a_sink_that_fails_and_frees(void) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 2, 8000};
    struct target target;
    vorlund_error error;
    open_library();
    make_target(&target);
    C_OK(vorlund_writer_create("wav", &target.writer));
    C_OK(vorlund_writer_open_sink(target.writer, target.sink, &format));
    target.code = 5;
    C_CODE(VORLUND_ERROR_IO, vorlund_writer_write(target.writer, samples, sizeof(samples)));
    error.size = sizeof(error);
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 5);
    target.code = 0;
    target.frees = 1;
    C_OK(vorlund_writer_write(target.writer, samples, sizeof(samples)));
    C_CHECK(target.codes[0] == VORLUND_ERROR_BUSY);
    C_CHECK(target.codes[1] == VORLUND_OK && target.codes[2] == VORLUND_OK);
    C_CHECK(target.releases == 1 && target.size > 44);
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_writer_finish(target.writer));
}

static void streams_are_converted(void) {
    vorlund_stream source = NULL;
    vorlund_stream stream = NULL;
    vorlund_writer writer = NULL;
    vorlund_audio_format format;
    vorlund_conversion conversion;
    uint64_t frames = 0;
    float mono[4];
    int16_t stereo[8];
    uint32_t count = 0;
    int i;
    open_library();
    memset(&conversion, 0, sizeof(conversion));
    conversion.size = sizeof(conversion);
    conversion.sample_format = VORLUND_SAMPLE_FLOAT;
    conversion.channels = 1;
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    C_OK(vorlund_convert_stream(source, &conversion, &stream));
    format.size = sizeof(format);
    C_OK(vorlund_stream_audio_format(stream, &format));
    C_CHECK(format.sample_format == VORLUND_SAMPLE_FLOAT && format.channels == 1 && format.rate == 22050);
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_read_float(stream, mono, 4, &count));
    C_CHECK(count == 4);
    C_OK(vorlund_release(stream));
    C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_read_int16(stream, stereo, 4, &count));
    for (i = 0; i < 4; ++i) {
        const double mean = 0.70710678 * (stereo[2 * i] + stereo[2 * i + 1]) / 32768.0;
        C_CHECK(fabs(mono[i] - mean) < 1e-4);
    }
    /* The whole of it into a file of 24 bits. */
    C_OK(vorlund_stream_seek(stream, 0));
    format.sample_format = VORLUND_SAMPLE_24BIT;
    format.channels = 2;
    C_OK(vorlund_writer_create("wav", &writer));
    C_OK(vorlund_writer_open_file(writer, c_temporary_file(), &format));
    C_OK(vorlund_writer_write_stream(writer, stream, &frames));
    C_CHECK(frames == C_RECORDING_FRAMES);
    C_OK(vorlund_writer_write_stream(writer, stream, NULL));
    C_OK(vorlund_writer_finish(writer));
    C_OK(vorlund_release(writer));
    C_OK(vorlund_release(stream));
    C_OK(vorlund_stream_open_file(c_temporary_file(), &stream));
    {
        int64_t length = 0;
        C_OK(vorlund_stream_length(stream, &length));
        C_CHECK(length > C_RECORDING_FRAMES * 6 && length < C_RECORDING_FRAMES * 6 + 200);
    }
    C_OK(vorlund_release(stream));
    /* What is not possible. */
    conversion.sample_format = VORLUND_SAMPLE_24BIT;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_convert_stream(source, &conversion, &stream));
    conversion.sample_format = VORLUND_SAMPLE_KEEP;
    conversion.channels = 9;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_convert_stream(source, &conversion, &stream));
    conversion.channels = 0;
    conversion.quality = 5;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_convert_stream(source, &conversion, &stream));
    conversion.quality = VORLUND_QUALITY_HIGH;
    conversion.rate = 48000;
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_convert_stream(source, &conversion, &stream));
    conversion.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_convert_stream(source, &conversion, &stream));
    C_OK(vorlund_release(source));
}

static void buffers_are_converted(void) {
    static const float floats[4] = {0.5f, 1.5f, -0.25f, -2.0f};
    int16_t shorts[4];
    float mixed[4];
    uint64_t clipped = 9;
    uint64_t frames = 44100;
    uint64_t result = 0;
    open_library();
    C_OK(vorlund_convert_samples(shorts, VORLUND_SAMPLE_16BIT, floats, VORLUND_SAMPLE_FLOAT, 2, 2, &clipped));
    C_CHECK(shorts[0] == 16384 && shorts[1] == 32767 && shorts[2] == -8192 && shorts[3] == -32768);
    C_CHECK(clipped == 2);
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_convert_samples(shorts, 9, floats, 3, 2, 2, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_convert_samples(NULL, 1, floats, 3, 2, 2, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_convert_samples(shorts, 1, NULL, 3, 2, 2, NULL));
    C_OK(vorlund_mix_samples(mixed, 1, floats, 2, 2));
    C_CHECK(fabs(mixed[0] - 1.0) < 1e-6 && fabs(mixed[1] + 1.125) < 1e-6);
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_mix_samples(mixed, 9, floats, 2, 2));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_mix_samples(NULL, 1, floats, 2, 2));
    C_OK(vorlund_resampled_frames(44100, 44100, 48000, &result));
    C_CHECK(result == 48000);
    C_OK(vorlund_resampled_frames_ptr(&frames, 44100, 22050, &result));
    C_CHECK(result == 22050);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resampled_frames(1, 0, 1, &result));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resampled_frames(1, 1, 1, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resampled_frames_ptr(NULL, 1, 1, &result));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_resample(mixed, 4, floats, 2, 2, 8000, 8000, 3));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resample(mixed, 1, floats, 2, 2, 8000, 8000, 3));
}

/* Programs of some languages unmask the traps of float operations. */
static void traps_of_the_program_stay(void) {
#ifdef __SSE__
    static const unsigned int masks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;
    const unsigned int before = _mm_getcsr();
    vorlund_stream stream = NULL;
    float floats[2] = {0, 0};
    int16_t shorts[2] = {1, 1};
    uint32_t count = 0;
    int32_t code;
    open_library();
    /* No number, and an infinity. */
    floats[0] = (float)(HUGE_VAL - HUGE_VAL);
    floats[1] = (float)HUGE_VAL;
    C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &stream));
    _mm_setcsr((before & ~masks) & ~0x3FU);
    code = vorlund_convert_samples(shorts, VORLUND_SAMPLE_16BIT, floats, VORLUND_SAMPLE_FLOAT, 1, 2, NULL);
    C_CHECK((_mm_getcsr() & masks) == 0);
    if (code == VORLUND_OK) code = vorlund_stream_read_float(stream, floats, 1, &count);
    C_CHECK((_mm_getcsr() & masks) == 0);
    _mm_setcsr(before);
    C_CHECK(code == VORLUND_OK && shorts[0] == 0 && shorts[1] == 32767);
    C_OK(vorlund_release(stream));
#else
    C_OK(vorlund_open(0));
#endif
}

/* Rounding, flags and the traps of the older unit too: each is after a call what it was before. */
static void float_state_stays(void) {
    static const int roundings[2] = {FE_TONEAREST, FE_UPWARD};
    int16_t shorts[2] = {1, 1};
    const float floats[2] = {0.1f, (float)HUGE_VAL};
    uint32_t i;
    open_library();
    for (i = 0; i < 4; ++i) {
        int32_t code;
        int rounding;
        int before;
        int flags;
        feclearexcept(FE_ALL_EXCEPT);
        /* Some processors raise a second one beside it. */
        if (i >= 2) feraiseexcept(FE_OVERFLOW);
        before = fetestexcept(FE_ALL_EXCEPT);
        fesetround(roundings[i % 2]);
        code = vorlund_convert_samples(shorts, VORLUND_SAMPLE_16BIT, floats, VORLUND_SAMPLE_FLOAT, 1, 2, NULL);
        rounding = fegetround();
        flags = fetestexcept(FE_ALL_EXCEPT);
        fesetround(FE_TONEAREST);
        feclearexcept(FE_ALL_EXCEPT);
        C_CHECK(code == VORLUND_OK && shorts[1] == 32767);
        C_CHECK(rounding == roundings[i % 2]);
        C_CHECK(flags == before && (i < 2) == (before == 0));
    }
#if defined(__GNUC__) && (defined(__i386__) || defined(__x86_64__))
    {
        /* Everything traps, as nobody has it; then this unit alone has flags. */
        static const uint16_t all_trap = 0x340;
        uint16_t before = 0;
        uint16_t control = 0;
        uint16_t status = 0;
        int32_t code;
        __asm__ volatile("fnstcw %0" : "=m"(before));
        __asm__ volatile("fldcw %0" : : "m"(all_trap));
        code = vorlund_convert_samples(shorts, VORLUND_SAMPLE_16BIT, floats, VORLUND_SAMPLE_FLOAT, 1, 2, NULL);
        __asm__ volatile("fnstcw %0" : "=m"(control));
        __asm__ volatile("fnstsw %0" : "=m"(status));
        __asm__ volatile("fldcw %0" : : "m"(before));
        C_CHECK(code == VORLUND_OK && control == all_trap && (status & 0xFF) == 0);
        __asm__ volatile("fld1; fldz; fdivrp; fstp %%st(0)" ::: "cc");
        code = vorlund_convert_samples(shorts, VORLUND_SAMPLE_16BIT, floats, VORLUND_SAMPLE_FLOAT, 1, 2, NULL);
        __asm__ volatile("fnstsw %0" : "=m"(status));
        __asm__ volatile("fnclex");
        C_CHECK(code == VORLUND_OK && (status & 0x3F) == 0x04);
    }
#endif
}

/* With the plug-ins of the build, as far as there are such. */
static void plugins_write_and_resample(void) {
    vorlund_writer writer = NULL;
    vorlund_stream source = NULL;
    vorlund_stream stream = NULL;
    vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 2, 22050};
    vorlund_conversion conversion;
    uint64_t frames = 0;
    float resampled[8];
    static const float floats[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    int32_t code;
    C_OK(vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    code = vorlund_writer_create("flac", &writer);
    C_CHECK(code == VORLUND_OK || code == VORLUND_ERROR_CLASS_NOT_FOUND);
    if (code == VORLUND_OK) {
        C_OK(vorlund_writer_tag(writer, "title", "Strings"));
        C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_writer_option(writer, "no such option", "1"));
        format.sample_format = VORLUND_SAMPLE_24BIT;
        C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_writer_open_file(writer, c_temporary_file(), &format));
        format.sample_format = VORLUND_SAMPLE_16BIT;
        C_OK(vorlund_writer_open_file(writer, c_temporary_file(), &format));
        C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
        C_OK(vorlund_writer_write_stream(writer, stream, &frames));
        C_CHECK(frames == C_RECORDING_FRAMES);
        C_OK(vorlund_writer_finish(writer));
        C_OK(vorlund_release(writer));
        C_OK(vorlund_release(stream));
        C_OK(vorlund_decode_file(c_temporary_file(), NULL, NULL, NULL, &stream));
        C_OK(vorlund_stream_frames(stream, &frames));
        C_CHECK(frames == C_RECORDING_FRAMES);
        C_OK(vorlund_release(stream));
    }
    memset(&conversion, 0, sizeof(conversion));
    conversion.size = sizeof(conversion);
    conversion.sample_format = VORLUND_SAMPLE_KEEP;
    conversion.rate = 44100;
    conversion.quality = VORLUND_QUALITY_MEDIUM;
    code = vorlund_convert_stream(source, &conversion, &stream);
    C_CHECK(code == VORLUND_OK || code == VORLUND_ERROR_CLASS_NOT_FOUND);
    if (code == VORLUND_OK) {
        C_OK(vorlund_stream_frames(stream, &frames));
        C_CHECK(frames == 2 * C_RECORDING_FRAMES);
        C_OK(vorlund_stream_audio_format(stream, &format));
        C_CHECK(format.rate == 44100 && format.sample_format == VORLUND_SAMPLE_16BIT);
        C_OK(vorlund_release(stream));
        C_OK(vorlund_resample(resampled, 4, floats, 2, 2, 8000, 16000, VORLUND_QUALITY_QUICK));
    }
    C_OK(vorlund_release(source));
}

static void sound_is_measured(void) {
    vorlund_stream stream = NULL;
    vorlund_levels levels = {sizeof(levels), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    vorlund_levels small = {8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    static float plain[2 * 8000];
    int32_t code;
    int i;
    C_OK(vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    for (i = 0; i < 2 * 8000; ++i) plain[i] = i % 2 == 0 ? 0.25f : -0.5f;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_measure_samples(NULL, 1, 2, 8000, &levels));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_measure_samples(plain, 1, 2, 8000, NULL));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_measure_stream(NULL, &levels));
    code = vorlund_measure_samples(plain, 8000, 2, 8000, &levels);
    C_CHECK(code == VORLUND_OK || code == VORLUND_ERROR_CLASS_NOT_FOUND);
    if (code == VORLUND_OK) {
        C_CHECK(levels.frames == 8000 && levels.peak == 0.5 && levels.peak_frame == 0);
        C_CHECK(fabs(levels.rms - sqrt((0.0625 + 0.25) / 2)) < 1e-6);
        C_CHECK(levels.clipped_samples == 0 && levels.silent_frames == 0 && levels.not_finite == 0);
        C_CODE(VORLUND_ERROR_RECORD, vorlund_measure_samples(plain, 1, 2, 8000, &small));
        C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_measure_samples(plain, 1, 65, 8000, &levels));
        C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &stream));
        C_OK(vorlund_stream_seek_frame(stream, 100));
        C_OK(vorlund_measure_stream(stream, &levels));
        C_CHECK(levels.frames == C_RECORDING_FRAMES - 100);
        C_CHECK(levels.integrated > -60 && levels.integrated < 0 && levels.true_peak >= levels.rms);
        C_OK(vorlund_release(stream));
    }
    C_OK(vorlund_stream_open_memory("abcd", 4, &stream));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_measure_stream(stream, &levels));
    C_OK(vorlund_release(stream));
}

static const struct c_case cases[] = {
    {"AFileIsWritten", a_file_is_written},
    {"MemoryIsWritten", memory_is_written},
    {"ASinkOfTheProgram", a_sink_of_the_program},
    {"WavFilesAreWritten", wav_files_are_written},
    {"WavIntoASinkByFrames", wav_into_a_sink_by_frames},
    {"ASinkThatFailsAndFrees", a_sink_that_fails_and_frees},
    {"StreamsAreConverted", streams_are_converted},
    {"BuffersAreConverted", buffers_are_converted},
    {"TrapsOfTheProgramStay", traps_of_the_program_stay},
    {"FloatStateStays", float_state_stays},
    {"PluginsWriteAndResample", plugins_write_and_resample},
    {"SoundIsMeasured", sound_is_measured},
};

C_SUITE(CWriting, cases);
