/* Plug-ins, classes, decoders of the program, resources, typed values, pictures. */
#include "Suite.h"

#include <stdlib.h>
#include <string.h>

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

static void classes_are_listed(void) {
    static const uint16_t wide_name[] = {'v', 'o', 'r', 'l', 'u', 'n', 'd', ':', ':', 'C', 'E', 'v', 0};
    vorlund_object object = NULL;
    uint32_t count = 0;
    uint32_t id[4] = {0};
    uint32_t found[4] = {0};
    uint32_t input[4] = {9, 9, 9, 9};
    uint32_t output[4] = {0};
    uint32_t length = 0;
    int32_t number = 0;
    int32_t has = 9;
    uint32_t i;
    char name[128];
    uint16_t wide[128];
    static const uint32_t pcm[4] = VORLUND_FORMAT_AUDIO_PCM;
    static const uint32_t base[4] = {0x021E95EDu, 0x173F45B5u, 0xA6C3EC3Fu, 0xB12B6A49u};
    open_library();
    C_OK(vorlund_class_count(&count));
    C_CHECK(count >= 38);
    for (i = 0; i < count; ++i) {
        C_OK(vorlund_class_name(i, name, sizeof(name), NULL));
        C_OK(vorlund_class_id(i, id));
        C_OK(vorlund_class_find(name, found));
        C_CHECK(memcmp(id, found, sizeof(id)) == 0);
    }
    C_OK(vorlund_class_name16(0, wide, 128, &length));
    C_OK(vorlund_class_find16(wide, found));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_class_find16(wide_name, found));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_class_find("no::Class", found));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_class_id(count, id));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_class_name(count, name, sizeof(name), NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_class_find(NULL, found));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_class_count(NULL));
    C_OK(vorlund_decoder_count(&count));
    C_CHECK(count == 1);
    C_OK(vorlund_decoder_ids(0, found, input, output));
    C_OK(vorlund_class_find("vorlund::CWavDecoder", id));
    C_CHECK(memcmp(id, found, sizeof(id)) == 0 && memcmp(output, pcm, sizeof(pcm)) == 0 && input[0] == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_ids(1, NULL, NULL, NULL));
    C_OK(vorlund_encoder_count(&count));
    C_CHECK(count == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_encoder_ids(0, NULL, NULL, NULL));
    /* Objects. */
    C_OK(vorlund_object_create(id, &object));
    C_OK(vorlund_object_info(object, found, &number));
    C_CHECK(memcmp(id, found, sizeof(id)) == 0 && number > 0);
    C_OK(vorlund_object_has_interface(object, base, &has));
    C_CHECK(has == 1);
    C_OK(vorlund_object_has_interface(object, pcm, &has));
    C_CHECK(has == 0);
    C_OK(vorlund_release(object));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_object_create(pcm, &object));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_object_create_named("no::Class", &object));
    C_OK(vorlund_object_create_named16(wide, &object));
    C_OK(vorlund_release(object));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_object_create(NULL, &object));
}

static void filters_of_any_class(void) {
    vorlund_object filter = NULL;
    vorlund_object other = NULL;
    vorlund_stream source = NULL;
    vorlund_stream stream = NULL;
    uint64_t frames = 0;
    open_library();
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    C_OK(vorlund_object_create_named("vorlund::CWavDecoder", &filter));
    C_OK(vorlund_object_connect(filter, source, &stream));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release(filter));
    C_OK(vorlund_stream_frames(stream, &frames));
    C_CHECK(frames == C_RECORDING_FRAMES);
    C_OK(vorlund_release(stream));
    C_OK(vorlund_object_create_named("vorlund::CResource", &other));
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_object_connect(other, source, &stream));
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_object_get_stream(other, &stream));
    C_OK(vorlund_release(other));
    C_OK(vorlund_object_create_named("vorlund::CRandomGenerator", &other));
    C_OK(vorlund_object_get_stream(other, &stream));
    C_OK(vorlund_release(other));
    {
        unsigned char bytes[64] = {0};
        uint32_t count = 0;
        C_OK(vorlund_stream_read(stream, bytes, 64, &count));
        C_CHECK(count == 64);
    }
    C_OK(vorlund_release(stream));
    /* One that refuses its input stays. */
    C_OK(vorlund_release(source));
    C_OK(vorlund_stream_open_memory("no wave", 7, &source));
    C_OK(vorlund_object_create_named("vorlund::CWavDecoder", &filter));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_object_connect(filter, source, &stream));
    C_OK(vorlund_release(filter));
    C_OK(vorlund_release(source));
}

/* A decoder of the program: "TONE", a number of frames as one byte, which are 0, 1, 2 and so on. */
struct tone {
    int connects;
    int disconnects;
    int32_t connect_code;
    int32_t read_code;
    uint32_t sample_format;
    unsigned char frames;
    int64_t position;
    vorlund_stream source;
    int32_t inner_code;
};

static int32_t VORLUND_CALL connect_tone(void* user, vorlund_stream source, vorlund_audio_format* format,
                                         void** decoder) {
    struct tone* const tone = (struct tone*)user;
    char head[5] = {0};
    uint32_t count = 0;
    ++tone->connects;
    if (tone->connect_code) return tone->connect_code;
    if (vorlund_stream_seek(source, 0) != VORLUND_OK) return 3;
    if (vorlund_stream_read(source, head, 5, &count) != VORLUND_OK) return 4;
    if (count < 5 || memcmp(head, "TONE", 4) != 0) return VORLUND_REFUSED;
    if (format->size < sizeof(*format)) return 5;
    format->sample_format = tone->sample_format;
    format->channels = 1;
    format->rate = 8000;
    tone->frames = (unsigned char)head[4];
    tone->position = 0;
    tone->source = source;
    *decoder = tone;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL read_tone(void* user, void* buffer, uint32_t size, uint32_t* count) {
    struct tone* const tone = (struct tone*)user;
    unsigned char* const bytes = (unsigned char*)buffer;
    int64_t position = 0;
    if (tone->read_code) return tone->read_code;
    /* The source is there for the decoder. */
    tone->inner_code = vorlund_stream_tell(tone->source, &position);
    for (*count = 0; *count < size && tone->position < tone->frames; ++*count)
        bytes[*count] = (unsigned char)tone->position++;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL seek_tone(void* user, const int64_t* position) {
    ((struct tone*)user)->position = *position;
    return VORLUND_OK;
}

static int32_t VORLUND_CALL length_of_tone(void* user, int64_t* length) {
    *length = ((struct tone*)user)->frames;
    return VORLUND_OK;
}

static void VORLUND_CALL disconnect_tone(void* user) {
    ++((struct tone*)user)->disconnects;
}

static vorlund_decoder_callbacks callbacks_of_tone(void) {
    vorlund_decoder_callbacks callbacks;
    memset(&callbacks, 0, sizeof(callbacks));
    callbacks.size = sizeof(callbacks);
    callbacks.connect = connect_tone;
    callbacks.read = read_tone;
    callbacks.seek = seek_tone;
    callbacks.length = length_of_tone;
    callbacks.disconnect = disconnect_tone;
    return callbacks;
}

static const uint32_t tone_id[4] = {0x70B1E2A3u, 0x4C5D4E6Fu, 0x8091A2B3u, 0xC4D5E6F7u};

static void a_decoder_of_the_program(void) {
    vorlund_decoder_callbacks callbacks = callbacks_of_tone();
    struct tone tone;
    vorlund_stream source = NULL;
    vorlund_stream wav = NULL;
    vorlund_stream stream = NULL;
    vorlund_report report = NULL;
    vorlund_error error;
    uint64_t frames = 0;
    uint32_t count = 0;
    unsigned char bytes[100] = {0};
    char name[64];
    int round;
    error.size = sizeof(error);
    /* Again in a second session. */
    for (round = 0; round < 2; ++round) {
        memset(&tone, 0, sizeof(tone));
        open_library();
        C_OK(vorlund_decoder_register(tone_id, "c_tests::Tone", &callbacks, &tone));
        C_OK(vorlund_stream_open_memory("TONEd", 5, &source));
        C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
        C_CHECK(tone.connects == 1 && tone.disconnects == 0);
        C_OK(vorlund_stream_frames(stream, &frames));
        C_CHECK(frames == 100);
        C_OK(vorlund_stream_read(stream, bytes, 100, &count));
        C_CHECK(count == 100 && bytes[0] == 0 && bytes[99] == 99);
        C_CHECK(tone.inner_code == VORLUND_OK);
        C_OK(vorlund_stream_read(stream, bytes, 100, &count));
        C_CHECK(count == 0);
        C_OK(vorlund_stream_seek_frame(stream, 42));
        C_OK(vorlund_stream_read(stream, bytes, 1, &count));
        C_CHECK(count == 1 && bytes[0] == 42);
        C_OK(vorlund_stream_chain_name(stream, 0, name, sizeof(name), NULL));
        C_CHECK(strcmp(name, "c_tests::Tone") == 0);
        tone.read_code = 321;
        C_CODE(VORLUND_ERROR_IO, vorlund_stream_read(stream, bytes, 1, &count));
        C_OK(vorlund_last_error(&error));
        C_CHECK(error.callback_code == 321);
        C_OK(vorlund_release(stream));
        C_CHECK(tone.disconnects == 1);
        /* Other data are refused, and the search goes on. */
        C_OK(vorlund_stream_open_file(C_RECORDING, &wav));
        C_OK(vorlund_decode_stream(wav, NULL, NULL, NULL, &stream));
        C_OK(vorlund_release(stream));
        C_OK(vorlund_release(wav));
        C_OK(vorlund_stream_open_memory("other data", 10, &wav));
        C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_stream(wav, NULL, NULL, &report, &stream));
        C_OK(vorlund_report_text(report, VORLUND_REPORT_WHOLE, name, sizeof(name), NULL) == VORLUND_ERROR_BUFFER
                 ? VORLUND_OK
                 : VORLUND_ERROR_FAILED);
        C_OK(vorlund_release(report));
        C_OK(vorlund_release(wav));
        C_CHECK(tone.disconnects == 1);
        /* It fails, or gives what is no format. */
        tone.connect_code = 55;
        C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
        tone.connect_code = 0;
        tone.sample_format = 9;
        C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
        C_CHECK(tone.disconnects == 2);
        tone.sample_format = 0;
        C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
        /* The close of the library ends it. */
        C_OK(vorlund_close());
        C_CHECK(tone.disconnects == 3);
    }
}

static void decoders_that_cannot_be_registered(void) {
    static const uint16_t name[] = {'x', 0};
    static const uint32_t none[4] = {0, 0, 0, 0};
    vorlund_decoder_callbacks callbacks = callbacks_of_tone();
    struct tone tone;
    uint32_t id[4] = {0x70B1E2A4u, 0, 0, 0};
    int i;
    memset(&tone, 0, sizeof(tone));
    open_library();
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_register(NULL, "x", &callbacks, &tone));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_register(none, "x", &callbacks, &tone));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_register(id, NULL, &callbacks, &tone));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_register(id, "x", NULL, &tone));
    callbacks.read = NULL;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decoder_register(id, "x", &callbacks, &tone));
    callbacks = callbacks_of_tone();
    callbacks.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_decoder_register(id, "x", &callbacks, &tone));
    callbacks.size = sizeof(callbacks);
    for (i = 0; i < VORLUND_MOST_DECODERS; ++i) {
        id[3] = (uint32_t)i;
        C_OK(vorlund_decoder_register16(id, name, &callbacks, &tone));
    }
    C_CODE(VORLUND_ERROR_FAILED, vorlund_decoder_register16(id, name, &callbacks, &tone));
}

static void resources_keep_bytes(void) {
    vorlund_resource resource = NULL;
    vorlund_stream stream = NULL;
    vorlund_sink sink = NULL;
    char bytes[16] = {0};
    uint32_t count = 0;
    uint64_t size = 9;
    const uint64_t at = 3;
    open_library();
    C_OK(vorlund_resource_create(&resource));
    C_OK(vorlund_resource_size(resource, &size));
    C_CHECK(size == 0);
    C_OK(vorlund_resource_get(resource, 0, bytes, 16, &count));
    C_CHECK(count == 0);
    C_OK(vorlund_resource_set(resource, "resource", 8));
    C_OK(vorlund_resource_get(resource, 2, bytes, 3, &count));
    C_CHECK(count == 3 && memcmp(bytes, "sou", 3) == 0);
    C_OK(vorlund_resource_get_ptr(resource, &at, bytes, 16, &count));
    C_CHECK(count == 5 && memcmp(bytes, "ource", 5) == 0);
    C_OK(vorlund_resource_get(resource, (uint64_t)1 << 40, bytes, 16, &count));
    C_CHECK(count == 0);
    C_OK(vorlund_resource_get_sink(resource, &sink));
    C_OK(vorlund_sink_seek(sink, 8));
    C_OK(vorlund_sink_write(sink, "s", 1));
    C_OK(vorlund_sink_flush(sink));
    C_OK(vorlund_release(sink));
    C_OK(vorlund_resource_get_stream(resource, &stream));
    C_OK(vorlund_release(resource));
    C_OK(vorlund_stream_read(stream, bytes, 16, &count));
    C_CHECK(count == 9 && memcmp(bytes, "resources", 9) == 0);
    /* From one to the other. */
    C_OK(vorlund_resource_create(&resource));
    C_OK(vorlund_resource_load(resource, stream));
    C_OK(vorlund_release(stream));
    C_OK(vorlund_sink_open_memory(&sink));
    C_OK(vorlund_resource_save(resource, sink));
    C_OK(vorlund_sink_length(sink, (int64_t*)&size));
    C_CHECK(size == 9);
    C_OK(vorlund_resource_set(resource, NULL, 0));
    C_OK(vorlund_resource_size(resource, &size));
    C_CHECK(size == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resource_set(resource, NULL, 1));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resource_get_ptr(resource, NULL, bytes, 16, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resource_get(resource, 0, NULL, 16, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_resource_create(NULL));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_resource_load(resource, NULL));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_resource_save(resource, NULL));
    C_OK(vorlund_release(sink));
    C_OK(vorlund_release(resource));
}

static void values_are_written_and_read(void) {
    static const uint16_t wide[] = {'w', 0xE4, 0};
    vorlund_resource resource = NULL;
    vorlund_stream stream = NULL;
    vorlund_sink sink = NULL;
    const int64_t large = -123456789012345;
    int64_t number64 = 0;
    int32_t number = 0;
    int32_t flag = 0;
    float single_number = 0;
    double double_number = 0;
    char text[16];
    uint16_t read[16];
    uint32_t length = 0;
    uint64_t size = 0;
    open_library();
    C_OK(vorlund_resource_create(&resource));
    C_OK(vorlund_resource_get_sink(resource, &sink));
    C_OK(vorlund_write_bool(sink, 7));
    C_OK(vorlund_write_int32(sink, -42));
    C_OK(vorlund_write_int64(sink, large));
    C_OK(vorlund_write_int64_ptr(sink, &large));
    C_OK(vorlund_write_float(sink, 0.5f));
    C_OK(vorlund_write_double(sink, -0.25));
    C_OK(vorlund_write_text(sink, "\xC3\xA4hm"));
    C_OK(vorlund_write_text16(sink, wide));
    C_OK(vorlund_write_text(sink, "longer than it may be"));
    C_OK(vorlund_write_int32(sink, 5));
    C_OK(vorlund_resource_size(resource, &size));
    C_CHECK(size == 1 + 4 + 8 + 8 + 4 + 8 + 4 + 6 + 4 + 4 + 4 + 42 + 4);
    C_OK(vorlund_resource_get_stream(resource, &stream));
    C_OK(vorlund_read_bool(stream, &flag));
    C_OK(vorlund_read_int32(stream, &number));
    C_CHECK(flag == 1 && number == -42);
    C_OK(vorlund_read_int64(stream, &number64));
    C_CHECK(number64 == large);
    C_OK(vorlund_read_int64(stream, &number64));
    C_CHECK(number64 == large);
    C_OK(vorlund_read_float(stream, &single_number));
    C_OK(vorlund_read_double(stream, &double_number));
    C_CHECK(single_number == 0.5f && double_number == -0.25);
    C_OK(vorlund_read_text(stream, text, sizeof(text), &length));
    C_CHECK(length == 4 && strcmp(text, "\xC3\xA4hm") == 0);
    C_OK(vorlund_read_text16(stream, read, 16, &length));
    C_CHECK(length == 2 && read[1] == 0xE4 && read[2] == 0);
    C_CODE(VORLUND_ERROR_BUFFER, vorlund_read_text(stream, text, sizeof(text), &length));
    C_CHECK(length == 21 && strcmp(text, "longer than it ") == 0);
    C_OK(vorlund_read_int32(stream, &number));
    C_CHECK(number == 5);
    C_CODE(VORLUND_ERROR_IO, vorlund_read_int32(stream, &number));
    C_CODE(VORLUND_ERROR_IO, vorlund_read_bool(stream, &flag));
    C_CODE(VORLUND_ERROR_IO, vorlund_read_text(stream, text, sizeof(text), &length));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_read_double(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_write_text(sink, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_write_int64_ptr(sink, NULL));
    C_OK(vorlund_release(stream));
    C_OK(vorlund_release(sink));
    C_OK(vorlund_release(resource));
}

static vorlund_stream make_plasma(void) {
    vorlund_object generator = NULL;
    vorlund_stream stream = NULL;
    C_OK(vorlund_object_create_named("vorlund::CPlasmaVideoGenerator", &generator));
    C_OK(vorlund_object_get_stream(generator, &stream));
    C_OK(vorlund_release(generator));
    return stream;
}

static void video_is_read_in_pictures(void) {
    vorlund_stream stream = NULL;
    vorlund_stream sound = NULL;
    vorlund_video_format format;
    unsigned char* raw;
    unsigned char* rgb;
    unsigned char* bgra;
    uint32_t count = 0;
    int32_t is_read = 0;
    uint32_t x;
    uint32_t pixels;
    const uint64_t first = 0;
    open_library();
    stream = make_plasma();
    format.size = sizeof(format);
    C_OK(vorlund_stream_video_format(stream, &format));
    C_CHECK(format.width > 0 && format.height > 0 && format.frame_rate > 0 && format.bits_per_pixel == 32);
    C_CHECK(format.frame_size == format.width * format.height * 4);
    pixels = format.width * format.height;
    raw = (unsigned char*)malloc(format.frame_size);
    rgb = (unsigned char*)malloc((size_t)pixels * 3);
    bgra = (unsigned char*)malloc((size_t)pixels * 4);
    C_OK(vorlund_stream_read(stream, raw, format.frame_size, &count));
    C_CHECK(count == format.frame_size);
    C_OK(vorlund_release(stream));
    /* Each of them makes the same pictures. */
    stream = make_plasma();
    C_OK(vorlund_stream_read_picture(stream, VORLUND_PIXELS_RGB, rgb, (int32_t)format.width * 3, &is_read));
    C_CHECK(is_read == 1);
    C_OK(vorlund_release(stream));
    stream = make_plasma();
    C_OK(vorlund_stream_read_picture(stream, VORLUND_PIXELS_BGRA,
                                     bgra + (size_t)(format.height - 1) * format.width * 4,
                                     -(int32_t)format.width * 4, NULL));
    for (x = 0; x < format.width; ++x) {
        const unsigned char* const pixel = raw + (size_t)x * 4;
        const unsigned char* const top = bgra + ((size_t)(format.height - 1) * format.width + x) * 4;
        C_CHECK(rgb[3 * x] == pixel[format.red_shift / 8] && rgb[3 * x + 1] == pixel[format.green_shift / 8] &&
                rgb[3 * x + 2] == pixel[format.blue_shift / 8]);
        C_CHECK(top[0] == rgb[3 * x + 2] && top[1] == rgb[3 * x + 1] && top[2] == rgb[3 * x]);
        if (rgb[3 * x] != pixel[format.red_shift / 8]) break;
    }
    C_CODE(VORLUND_ERROR_NOT_SUPPORTED, vorlund_stream_seek_picture_ptr(stream, &first));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_seek_picture_ptr(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_seek_picture(stream, (uint64_t)1 << 63));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_picture(stream, 4, rgb, 4000, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_picture(stream, 0, NULL, 4000, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_picture(stream, 0, rgb, 2, NULL));
    format.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_stream_video_format(stream, &format));
    C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &sound));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_stream_video_format(sound, &format));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_stream_read_picture(sound, 0, rgb, 4000, NULL));
    C_OK(vorlund_release(sound));
    C_OK(vorlund_release(stream));
    free(raw);
    free(rgb);
    free(bgra);
}

/* By the plug-in image, where it is built. */
static void pictures_are_decoded(void) {
    static const uint32_t image[4] = VORLUND_FORMAT_IMAGE_RGB;
    static const char* const file = "fuzz/corpus/image/basn6a08.png";
    vorlund_stream stream = NULL;
    vorlund_video_format format;
    unsigned char pixels[32 * 32 * 4];
    int32_t is_read = 9;
    int32_t code;
    open_library();
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_file(file, image, NULL, NULL, &stream));
    C_OK(vorlund_close());
    C_OK(vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    code = vorlund_decode_file(file, image, NULL, NULL, &stream);
    C_CHECK(code == VORLUND_OK || code == VORLUND_ERROR_DATA_FORMAT);
    if (code != VORLUND_OK) return;
    format.size = sizeof(format);
    C_OK(vorlund_stream_video_format(stream, &format));
    C_CHECK(format.width == 32 && format.height == 32 && format.frame_rate == 0);
    C_OK(vorlund_stream_read_picture(stream, VORLUND_PIXELS_RGBA, pixels, 32 * 4, &is_read));
    C_CHECK(is_read == 1);
    /* The picture is red at the top left and transparent there. */
    C_CHECK(pixels[0] == 255 && pixels[1] == 0 && pixels[3] == 0);
    C_OK(vorlund_stream_read_picture(stream, VORLUND_PIXELS_RGBA, pixels, 32 * 4, &is_read));
    C_CHECK(is_read == 0);
    C_OK(vorlund_stream_seek_picture(stream, 0));
    C_OK(vorlund_stream_read_picture(stream, VORLUND_PIXELS_BGR, pixels, 32 * 3, &is_read));
    C_CHECK(is_read == 1 && pixels[2] == 255);
    C_OK(vorlund_release(stream));
}

static void plugins_are_reported(void) {
    vorlund_plugin_report report;
    uint32_t before = 0;
    uint32_t count = 0;
    uint32_t i;
    uint32_t length = 0;
    int32_t outcome = 99;
    char text[512];
    uint16_t wide[512];
    static const uint16_t folder[] = {'n', 'o', ' ', 'f', 'o', 'l', 'd', 'e', 'r', 0};
    C_OK(vorlund_plugin_path_count(&before));
    C_OK(vorlund_plugin_add_path("no such folder"));
    C_OK(vorlund_plugin_add_path16(folder));
    C_OK(vorlund_plugin_path_count(&count));
    C_CHECK(count == before + 2);
    C_OK(vorlund_plugin_path(before, text, sizeof(text), NULL));
    C_CHECK(strncmp(text, "no such folder", 14) == 0);
    C_OK(vorlund_plugin_path16(before + 1, wide, 512, &length));
    C_CHECK(length >= 9 && wide[0] == 'n');
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_path(count, text, sizeof(text), NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_add_path(NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_path_count(NULL));
    C_OK(vorlund_plugin_clear_paths());
    C_OK(vorlund_plugin_path_count(&count));
    C_CHECK(count == 0);
    C_OK(vorlund_plugin_set_strict(0));
    C_OK(vorlund_plugin_set_scan(1, "no such helper"));
    C_OK(vorlund_plugin_set_scan16(0, folder));
    C_OK(vorlund_plugin_set_scan(0, NULL));
    C_CODE(VORLUND_ERROR_NOT_OPEN, vorlund_plugin_load_file(C_RECORDING, &outcome));
    C_OK(vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    C_OK(vorlund_plugin_report_count(&before));
    C_OK(vorlund_plugin_load_file(C_RECORDING, &outcome));
    C_CHECK(outcome == VORLUND_PLUGIN_NO_PLUGIN);
    C_OK(vorlund_plugin_load_file16(folder, &outcome));
    C_CHECK(outcome == VORLUND_PLUGIN_NO_PLUGIN);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_load_file(C_RECORDING, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_load_file(NULL, &outcome));
    C_OK(vorlund_plugin_report_count(&count));
    C_CHECK(count >= 1);
    for (i = 0; i < count; ++i) {
        report.size = sizeof(report);
        C_OK(vorlund_plugin_get_report(i, &report));
        C_OK(vorlund_plugin_report_text(i, VORLUND_PLUGIN_TEXT_EXPLANATION, text, sizeof(text), &length));
        C_CHECK(length > 0);
        C_OK(vorlund_plugin_report_text(i, VORLUND_PLUGIN_TEXT_PATH, text, sizeof(text), NULL));
        if (strstr(text, "strings.wav") != NULL) C_CHECK(report.outcome == VORLUND_PLUGIN_NO_PLUGIN);
        if (report.outcome == VORLUND_PLUGIN_LOADED) C_CHECK(report.items > 0 && report.loads > 0);
        C_OK(vorlund_plugin_report_text16(i, VORLUND_PLUGIN_TEXT_NAME, wide, 512, NULL));
    }
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_report_text(0, 8, text, sizeof(text), NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_plugin_get_report(count, &report));
    report.size = 4;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_plugin_get_report(0, &report));
    C_OK(vorlund_plugin_set_strict(1));
    C_OK(vorlund_close());
}

static const struct c_case cases[] = {
    {"ClassesAreListed", classes_are_listed},
    {"FiltersOfAnyClass", filters_of_any_class},
    {"ADecoderOfTheProgram", a_decoder_of_the_program},
    {"DecodersThatCannotBeRegistered", decoders_that_cannot_be_registered},
    {"ResourcesKeepBytes", resources_keep_bytes},
    {"ValuesAreWrittenAndRead", values_are_written_and_read},
    {"VideoIsReadInPictures", video_is_read_in_pictures},
    {"PicturesAreDecoded", pictures_are_decoded},
    {"PluginsAreReported", plugins_are_reported},
};

C_SUITE(CLibrary, cases);
