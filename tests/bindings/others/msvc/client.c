/* A client of the C interface without the C library, for compilers with the binary interface of Microsoft's. What it
   prints, tests/bindings/others/OtherCompilers_test.cpp expects. */
#include <vorlund_c.h>

/* The system, as far as it is needed. */
#ifdef _WIN64
#define SYSTEM_CALL
#else
#define SYSTEM_CALL __stdcall
#endif
void* SYSTEM_CALL GetStdHandle(uint32_t number);
int32_t SYSTEM_CALL WriteFile(void* file, const void* bytes, uint32_t count, uint32_t* written, void* overlapped);
void SYSTEM_CALL ExitProcess(uint32_t code);

/* The compiler may call these. */
void* memcpy(void* to, const void* from, size_t count) {
    volatile uint8_t* bytes = (uint8_t*)to;
    size_t i;
    for (i = 0; i < count; ++i) bytes[i] = ((const uint8_t*)from)[i];
    return to;
}
void* memset(void* to, int value, size_t count) {
    volatile uint8_t* bytes = (uint8_t*)to;
    size_t i;
    for (i = 0; i < count; ++i) bytes[i] = (uint8_t)value;
    return to;
}

enum { FRAMES = 100, SIZE = 44 + 2 * FRAMES };

typedef struct source {
    uint8_t bytes[SIZE];
    int64_t position;
    int32_t code;
    int32_t released;
} source;

static void print(const char* text) {
    uint32_t length = 0;
    uint32_t written = 0;
    while (text[length]) ++length;
    WriteFile(GetStdHandle((uint32_t)-11), text, length, &written, 0);
}

/* "name 1 2\n" */
static void print_numbers(const char* name, int64_t first, int64_t second) {
    const int64_t numbers[2] = {first, second};
    int i;
    print(name);
    for (i = 0; i < 2; ++i) {
        char text[16];
        int at = 15;
        /* 32 bits: division by 64-bit numbers is a function of the compiler's library. */
        uint32_t rest = (uint32_t)numbers[i];
        text[at] = 0;
        do {
            text[--at] = (char)('0' + rest % 10);
            rest /= 10;
        } while (rest > 0);
        print(" ");
        print(text + at);
    }
    print("\n");
}

static void put(uint8_t* bytes, uint32_t value, int count) {
    int i;
    for (i = 0; i < count; ++i) bytes[i] = (uint8_t)(value >> 8 * i);
}

static void make_wav(source* self) {
    static const char text[] = "RIFF....WAVEfmt ....................data....";
    int i;
    for (i = 0; i < 44; ++i) self->bytes[i] = (uint8_t)text[i];
    put(self->bytes + 4, SIZE - 8, 4);
    put(self->bytes + 16, 16, 4);
    put(self->bytes + 20, 1, 2);
    put(self->bytes + 22, 1, 2);
    put(self->bytes + 24, 8000, 4);
    put(self->bytes + 28, 16000, 4);
    put(self->bytes + 32, 2, 2);
    put(self->bytes + 34, 16, 2);
    put(self->bytes + 40, 2 * FRAMES, 4);
    for (i = 0; i < FRAMES; ++i) put(self->bytes + 44 + 2 * i, (uint32_t)(3 * i), 2);
}

static int32_t VORLUND_CALL on_read(void* user, void* buffer, uint32_t size, uint32_t* count) {
    source* self = (source*)user;
    int64_t rest = SIZE - self->position;
    if (self->code) return self->code;
    *count = rest < size ? (uint32_t)rest : size;
    memcpy(buffer, self->bytes + self->position, *count);
    self->position += *count;
    return VORLUND_OK;
}
static int32_t VORLUND_CALL on_seek(void* user, const int64_t* position) {
    ((source*)user)->position = *position;
    return VORLUND_OK;
}
static int32_t VORLUND_CALL on_length(void* user, int64_t* length) {
    (void)user;
    *length = SIZE;
    return VORLUND_OK;
}
static void VORLUND_CALL on_release(void* user) {
    ++((source*)user)->released;
}

static int32_t failures = 0;
static void check(int32_t result, int32_t wanted) {
    if (result == wanted) return;
    ++failures;
    print_numbers("result", result, wanted);
}

static source input;

void start(void) {
    vorlund_stream_callbacks callbacks;
    vorlund_stream stream = 0;
    vorlund_stream decoded = 0;
    vorlund_audio_format format;
    vorlund_error error;
    char text[200];
    uint16_t text16[200];
    uint32_t length = 0;
    uint32_t length16 = 0;
    uint32_t count = 0;
    int16_t samples[5] = {0, 0, 0, 0, 0};
    int64_t place = 0;
    int64_t bytes = 0;
    uint64_t frame = 7;
    int32_t version = 0;

    check(vorlund_version(0, &version), VORLUND_OK);
    print_numbers("version", version, 0);
    check(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES), VORLUND_OK);

    make_wav(&input);
    callbacks.size = sizeof callbacks;
    callbacks.reserved = 0;
    callbacks.read = on_read;
    callbacks.seek = on_seek;
    callbacks.length = on_length;
    callbacks.release = on_release;
    check(vorlund_stream_create(&callbacks, &input, 0, &stream), VORLUND_OK);
    check(vorlund_decode_stream(stream, 0, 0, 0, &decoded), VORLUND_OK);
    format.size = sizeof format;
    check(vorlund_stream_audio_format(decoded, &format), VORLUND_OK);
    print_numbers("format", format.channels, format.rate);
    check(vorlund_stream_length(decoded, &bytes), VORLUND_OK);
    check(vorlund_stream_seek(decoded, 100), VORLUND_OK);
    check(vorlund_stream_tell(decoded, &place), VORLUND_OK);
    print_numbers("length", bytes, place);
    check(vorlund_stream_read_int16(decoded, samples, 5, &count), VORLUND_OK);
    print_numbers("samples", count, samples[4]);
    check(vorlund_stream_seek_frame_ptr(decoded, &frame), VORLUND_OK);
    check(vorlund_stream_read_int16(decoded, samples, 1, &count), VORLUND_OK);
    check(vorlund_stream_tell_frame(decoded, &frame), VORLUND_OK);
    print_numbers("frame", (int64_t)frame, samples[0]);

    input.code = 42;
    check(vorlund_stream_read(stream, samples, 2, &count), VORLUND_ERROR_IO);
    error.size = sizeof error;
    check(vorlund_last_error(&error), VORLUND_OK);
    print_numbers("error", error.code, error.callback_code);
    check(vorlund_release(decoded), VORLUND_OK);
    check(vorlund_release(stream), VORLUND_OK);
    check(vorlund_release(stream), VORLUND_ERROR_HANDLE);
    print_numbers("released", input.released, 0);

    check(vorlund_decode_file("there is none.wav", 0, 0, 0, &decoded), VORLUND_ERROR_FILE_ACCESS);
    check(vorlund_error_text(VORLUND_ERROR_TEXT_TYPE, text, 200, &length), VORLUND_OK);
    check(vorlund_error_text16(VORLUND_ERROR_TEXT_TYPE, text16, 200, &length16), VORLUND_OK);
    print(text);
    print_numbers("", length, length16);
    check(vorlund_close(), VORLUND_OK);
    check(vorlund_handle_count(&count), VORLUND_OK);
    print_numbers("handles", count, (uint32_t)failures);
    ExitProcess((uint32_t)failures);
}
