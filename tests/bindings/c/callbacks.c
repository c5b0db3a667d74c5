/* Streams of the program: callbacks that fail, come back into the library, and free what calls them. */
#include "Suite.h"

#include <stdlib.h>
#include <string.h>

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

/* A whole file in memory, with faults. */
struct source {
    unsigned char* bytes;
    int64_t size;
    int64_t position;
    int64_t fails_from; /* reads from this byte on give the code; -1 for never */
    int32_t code;
    int gives_too_much;
    int releases;
    /* What a read does besides. */
    void (*inside)(struct source*);
    vorlund_stream stream;
    vorlund_stream decoder;
    int32_t codes[4];
};

static int32_t VORLUND_CALL read_source(void* user, void* buffer, uint32_t size, uint32_t* count) {
    struct source* const source = (struct source*)user;
    const int64_t left = source->size - source->position;
    if (source->inside) source->inside(source);
    if (source->fails_from >= 0 && source->position + size > source->fails_from) {
        if (source->position >= source->fails_from) return source->code;
        size = (uint32_t)(source->fails_from - source->position);
    }
    *count = left < (int64_t)size ? (uint32_t)left : size;
    memcpy(buffer, source->bytes + source->position, *count);
    source->position += *count;
    if (source->gives_too_much) *count = size + 1;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL seek_source(void* user, const int64_t* position) {
    struct source* const source = (struct source*)user;
    if (*position > source->size) return 77;
    source->position = *position;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL length_of_source(void* user, int64_t* length) {
    *length = ((struct source*)user)->size;
    return VORLUND_OK;
}

static void VORLUND_CALL release_source(void* user) {
    ++((struct source*)user)->releases;
}

static vorlund_stream_callbacks callbacks_of_source(void) {
    vorlund_stream_callbacks callbacks;
    memset(&callbacks, 0, sizeof(callbacks));
    callbacks.size = sizeof(callbacks);
    callbacks.read = read_source;
    callbacks.seek = seek_source;
    callbacks.length = length_of_source;
    callbacks.release = release_source;
    return callbacks;
}

static void load_source(struct source* source) {
    vorlund_stream file = NULL;
    uint32_t count = 0;
    memset(source, 0, sizeof(*source));
    source->fails_from = -1;
    C_OK(vorlund_stream_open_file(C_RECORDING, &file));
    C_OK(vorlund_stream_length(file, &source->size));
    source->bytes = (unsigned char*)malloc((size_t)source->size);
    C_OK(vorlund_stream_read(file, source->bytes, (uint32_t)source->size, &count));
    C_CHECK(count == source->size);
    C_OK(vorlund_release(file));
}

static void make_decoder(struct source* source) {
    const vorlund_stream_callbacks callbacks = callbacks_of_source();
    load_source(source);
    C_OK(vorlund_stream_create(&callbacks, source, NULL, &source->stream));
    C_OK(vorlund_decode_stream(source->stream, NULL, NULL, NULL, &source->decoder));
}

static void a_stream_of_the_program_is_decoded(void) {
    struct source source;
    uint64_t frames = 0;
    uint32_t count = 0;
    int16_t samples[2];
    open_library();
    make_decoder(&source);
    /* The source goes with the decoder, not before. */
    C_OK(vorlund_release(source.stream));
    C_CHECK(source.releases == 0);
    C_OK(vorlund_stream_frames(source.decoder, &frames));
    C_CHECK(frames == C_RECORDING_FRAMES);
    C_OK(vorlund_stream_seek_frame(source.decoder, 5000));
    C_OK(vorlund_stream_read_int16(source.decoder, samples, 1, &count));
    C_CHECK(count == 1 && memcmp(samples, source.bytes + source.position - 4, 4) == 0);
    C_OK(vorlund_release(source.decoder));
    C_CHECK(source.releases == 1);
    free(source.bytes);
}

static void raw_samples_of_the_program(void) {
    static const float samples[6] = {0.0f, 0.5f, -0.5f, 1.0f, 2.0f, -1.0f};
    const vorlund_stream_callbacks callbacks = callbacks_of_source();
    vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_FLOAT, 2, 8000};
    struct source source;
    vorlund_stream stream = NULL;
    int16_t read[6];
    uint32_t count = 0;
    open_library();
    memset(&source, 0, sizeof(source));
    source.bytes = (unsigned char*)(uintptr_t)samples;
    source.size = sizeof(samples);
    source.fails_from = -1;
    C_OK(vorlund_stream_create(&callbacks, &source, &format, &stream));
    C_OK(vorlund_stream_read_int16(stream, read, 3, &count));
    C_CHECK(count == 3);
    C_CHECK(read[0] == 0 && read[1] == 16384 && read[2] == -16384 && read[3] == 32767 && read[4] == 32767 &&
            read[5] == -32768);
    C_OK(vorlund_release(stream));
    format.sample_format = 9;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_create(&callbacks, &source, &format, &stream));
    format.sample_format = 1;
    format.channels = 0;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_create(&callbacks, &source, &format, &stream));
    format.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_stream_create(&callbacks, &source, &format, &stream));
    C_CHECK(source.releases == 1);
}

static void a_read_that_fails(void) {
    struct source source;
    unsigned char bytes[1000];
    uint32_t count = 0;
    vorlund_error error;
    error.size = sizeof(error);
    open_library();
    make_decoder(&source);
    C_OK(vorlund_stream_seek(source.decoder, 0));
    source.fails_from = source.position + 100;
    source.code = 4711;
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_read(source.stream, bytes, 1000, &count));
    C_CHECK(count == 100);
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 4711);
    C_CHECK(strcmp(error.reason, "A callback failed") == 0 && strcmp(error.type, "CIOException") == 0);
    /* Frames that came before are delivered. */
    C_OK(vorlund_stream_seek(source.decoder, 0));
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_read_float(source.decoder, (float*)(void*)bytes, 100, &count));
    /* It works again when the source does. */
    source.fails_from = -1;
    C_OK(vorlund_stream_seek(source.decoder, 0));
    C_OK(vorlund_stream_read_float(source.decoder, (float*)(void*)bytes, 100, &count));
    C_CHECK(count == 100);
    source.gives_too_much = 1;
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_read(source.stream, bytes, 10, &count));
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 0);
    source.gives_too_much = 0;
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_seek(source.stream, source.size + 1));
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 77);
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_seek(source.stream, -1));
    C_OK(vorlund_release(source.decoder));
    C_OK(vorlund_release(source.stream));
    C_CHECK(source.releases == 1);
    free(source.bytes);
}

static void a_search_over_a_source_that_fails(void) {
    const vorlund_stream_callbacks callbacks = callbacks_of_source();
    struct source source;
    vorlund_report report = NULL;
    vorlund_report_entry entry;
    vorlund_error error;
    error.size = sizeof(error);
    open_library();
    load_source(&source);
    source.fails_from = 0;
    source.code = 5;
    C_OK(vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    C_CODE(VORLUND_ERROR_DATA_FORMAT,
           vorlund_decode_stream(source.stream, NULL, NULL, &report, &source.decoder));
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.callback_code == 5);
    entry.size = sizeof(entry);
    C_OK(vorlund_report_get_entry(report, 0, &entry));
    C_CHECK(entry.outcome == VORLUND_DECODE_REFUSED && entry.bytes_read == 0);
    C_OK(vorlund_release(report));
    C_OK(vorlund_release(source.stream));
    free(source.bytes);
}

static void streams_without_positions(void) {
    vorlund_stream_callbacks callbacks = callbacks_of_source();
    struct source source;
    int64_t length = 0;
    uint32_t capabilities = 0;
    unsigned char bytes[4];
    uint32_t count = 0;
    open_library();
    load_source(&source);
    callbacks.seek = NULL;
    callbacks.length = NULL;
    callbacks.release = NULL;
    C_OK(vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_stream_seek(source.stream, 0));
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_stream_length(source.stream, &length));
    C_OK(vorlund_stream_capabilities(source.stream, &capabilities));
    C_CHECK((capabilities & VORLUND_CAN_SEEK) == 0);
    C_OK(vorlund_stream_read(source.stream, bytes, 4, &count));
    C_CHECK(count == 4 && memcmp(bytes, "RIFF", 4) == 0);
    C_OK(vorlund_release(source.stream));
    callbacks.read = NULL;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    callbacks.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    free(source.bytes);
}

static void use_itself(struct source* source) {
    unsigned char byte;
    uint32_t count;
    int64_t position;
    source->codes[0] = vorlund_stream_read(source->decoder, &byte, 1, &count);
    source->codes[1] = vorlund_stream_seek(source->stream, 0);
    source->codes[2] = vorlund_stream_tell(source->decoder, &position);
    source->codes[3] = vorlund_close();
}

static void use_others(struct source* source) {
    vorlund_stream other = NULL;
    int16_t samples[20];
    uint32_t count = 0;
    source->inside = NULL;
    source->codes[0] = vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &other);
    source->codes[1] = vorlund_stream_read_int16(other, samples, 10, &count);
    source->codes[2] = vorlund_release(other);
    source->codes[3] = vorlund_open(0) + vorlund_close();
}

static void callbacks_come_back(void) {
    struct source source;
    int16_t samples[20];
    uint32_t count = 0;
    open_library();
    make_decoder(&source);
    source.inside = use_itself;
    C_OK(vorlund_stream_read_int16(source.decoder, samples, 10, &count));
    C_CHECK(count == 10);
    C_CHECK(source.codes[0] == VORLUND_ERROR_BUSY && source.codes[1] == VORLUND_ERROR_BUSY);
    C_CHECK(source.codes[2] == VORLUND_ERROR_BUSY && source.codes[3] == VORLUND_ERROR_BUSY);
    source.inside = use_others;
    C_OK(vorlund_stream_read_int16(source.decoder, samples, 10, &count));
    C_CHECK(count == 10);
    C_CHECK(source.codes[0] == VORLUND_OK && source.codes[1] == VORLUND_OK);
    C_CHECK(source.codes[2] == VORLUND_OK && source.codes[3] == VORLUND_OK);
    C_OK(vorlund_release(source.stream));
    C_OK(vorlund_release(source.decoder));
    free(source.bytes);
}

static void free_everything(struct source* source) {
    source->inside = NULL;
    source->codes[0] = vorlund_release(source->decoder);
    source->codes[1] = vorlund_release(source->stream);
    source->codes[2] = vorlund_release(source->decoder);
    source->codes[3] = source->releases;
}

static void callbacks_free_what_calls_them(void) {
    struct source source;
    int16_t samples[20];
    uint32_t count = 0;
    open_library();
    make_decoder(&source);
    source.inside = free_everything;
    C_OK(vorlund_stream_read_int16(source.decoder, samples, 10, &count));
    C_CHECK(count == 10);
    C_CHECK(source.codes[0] == VORLUND_OK && source.codes[1] == VORLUND_OK);
    C_CHECK(source.codes[2] == VORLUND_ERROR_HANDLE);
    /* Not before the read had ended, and then at once. */
    C_CHECK(source.codes[3] == 0 && source.releases == 1);
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_read_int16(source.decoder, samples, 10, &count));
    free(source.bytes);
}

static void VORLUND_CALL release_and_call(void* user) {
    struct source* const source = (struct source*)user;
    ++source->releases;
    source->codes[0] = vorlund_release(source->stream);
    source->codes[1] = vorlund_close();
}

static void the_end_may_call_too(void) {
    vorlund_stream_callbacks callbacks = callbacks_of_source();
    struct source source;
    open_library();
    load_source(&source);
    callbacks.release = release_and_call;
    C_OK(vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    C_OK(vorlund_release(source.stream));
    C_CHECK(source.releases == 1 && source.codes[0] == VORLUND_ERROR_HANDLE);
    if (source.codes[1] == VORLUND_OK) open_library();
    /* And the close of the library frees what is left. */
    C_OK(vorlund_stream_create(&callbacks, &source, NULL, &source.stream));
    C_OK(vorlund_close());
    C_CHECK(source.releases == 2 && source.codes[1] == VORLUND_ERROR_BUSY);
    free(source.bytes);
}

static const struct c_case cases[] = {
    {"AStreamOfTheProgramIsDecoded", a_stream_of_the_program_is_decoded},
    {"RawSamplesOfTheProgram", raw_samples_of_the_program},
    {"AReadThatFails", a_read_that_fails},
    {"ASearchOverASourceThatFails", a_search_over_a_source_that_fails},
    {"StreamsWithoutPositions", streams_without_positions},
    {"CallbacksComeBack", callbacks_come_back},
    {"CallbacksFreeWhatCallsThem", callbacks_free_what_calls_them},
    {"TheEndMayCallToo", the_end_may_call_too},
};

C_SUITE(CCallbacks, cases);
