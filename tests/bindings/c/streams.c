/* Streams, decoding, frames, reports, and streams of the program. */
#include "Suite.h"

#include <stdlib.h>
#include <string.h>

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

static void a_file_is_read(void) {
    vorlund_stream stream = NULL;
    char bytes[12] = {0};
    uint32_t count = 0;
    int64_t position = 0;
    int64_t length = 0;
    uint32_t capabilities = 0;
    uint32_t id[4] = {1, 1, 1, 1};
    int32_t is_at_end = 1;
    uint16_t path[64];
    vorlund_audio_format format;
    open_library();
    C_OK(vorlund_utf8_to_utf16(C_RECORDING, path, 64, NULL));
    C_OK(vorlund_stream_open_file16(path, &stream));
    C_OK(vorlund_stream_read(stream, bytes, 12, &count));
    C_CHECK(count == 12 && memcmp(bytes, "RIFF", 4) == 0 && memcmp(bytes + 8, "WAVE", 4) == 0);
    C_OK(vorlund_stream_tell(stream, &position));
    C_CHECK(position == 12);
    C_OK(vorlund_stream_length(stream, &length));
    C_CHECK(length > 405720);
    C_OK(vorlund_stream_seek(stream, 8));
    C_OK(vorlund_stream_read(stream, bytes, 4, &count));
    C_CHECK(memcmp(bytes, "WAVE", 4) == 0);
    position = length - 2;
    C_OK(vorlund_stream_seek_ptr(stream, &position));
    C_OK(vorlund_stream_eof(stream, &is_at_end));
    C_CHECK(is_at_end == 0);
    C_OK(vorlund_stream_read(stream, bytes, 12, &count));
    C_CHECK(count == 2);
    C_OK(vorlund_stream_eof(stream, &is_at_end));
    C_CHECK(is_at_end == 1);
    C_OK(vorlund_stream_read(stream, bytes, 12, &count));
    C_CHECK(count == 0);
    C_OK(vorlund_stream_capabilities(stream, &capabilities));
    C_CHECK((capabilities & VORLUND_CAN_SEEK) != 0 && (capabilities & VORLUND_CAN_READ) != 0);
    C_OK(vorlund_stream_format_id(stream, id));
    C_CHECK(id[0] == 0 && id[3] == 0);
    format.size = sizeof(format);
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_stream_audio_format(stream, &format));
    C_OK(vorlund_stream_close(stream));
    C_CODE(VORLUND_ERROR_IO, vorlund_stream_read(stream, bytes, 12, &count));
    C_OK(vorlund_release(stream));
}

static void null_pointers_are_refused(void) {
    vorlund_stream stream = NULL;
    uint32_t count = 0;
    char byte = 0;
    open_library();
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_open_file(NULL, &stream));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_open_file16(NULL, &stream));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_open_file(C_RECORDING, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_open_memory(NULL, 1, &stream));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_open_memory("", 1, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decode_file(NULL, NULL, NULL, NULL, &stream));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decode_file16(NULL, NULL, NULL, NULL, &stream));
    C_CHECK(stream == NULL);
    C_OK(vorlund_stream_open_memory("abc", 3, &stream));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read(stream, NULL, 1, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read(stream, &byte, 1, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_tell(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_length(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_eof(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_capabilities(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_format_id(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_seek_ptr(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_seek_frame_ptr(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_frames(stream, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_create(NULL, NULL, NULL, &stream));
    C_OK(vorlund_stream_read(stream, NULL, 0, &count));
    C_OK(vorlund_release(stream));
}

static void frames_of_a_recording(void) {
    vorlund_stream stream = NULL;
    vorlund_audio_format format;
    uint64_t frames = 0;
    uint64_t at = 0;
    uint32_t count = 0;
    int16_t shorts[8] = {0};
    int32_t longs[8] = {0};
    float floats[8] = {0};
    double doubles[8] = {0};
    unsigned char packed[24];
    char bytes[16];
    int i;
    open_library();
    C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &stream));
    format.size = sizeof(format);
    C_OK(vorlund_stream_audio_format(stream, &format));
    C_CHECK(format.sample_format == VORLUND_SAMPLE_16BIT && format.channels == 2 && format.rate == 22050);
    C_OK(vorlund_stream_frames(stream, &frames));
    C_CHECK(frames == C_RECORDING_FRAMES);
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_tell_frame(stream, &at));
    C_CHECK(at == 5000);
    C_OK(vorlund_stream_read_int16(stream, shorts, 4, &count));
    C_CHECK(count == 4);
    at = 5000;
    C_OK(vorlund_stream_seek_frame_ptr(stream, &at));
    C_OK(vorlund_stream_read_int32(stream, longs, 4, &count));
    C_CHECK(count == 4);
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_read_float(stream, floats, 4, &count));
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_read_double(stream, doubles, 4, &count));
    C_CHECK(count == 4);
    C_OK(vorlund_stream_tell_frame(stream, &at));
    C_CHECK(at == 5004);
    C_OK(vorlund_stream_seek_frame(stream, 5000));
    C_OK(vorlund_stream_read_frames(stream, VORLUND_SAMPLE_24BIT, packed, 4, &count));
    C_OK(vorlund_stream_seek(stream, 20000));
    C_OK(vorlund_stream_read(stream, bytes, 16, &count));
    C_CHECK(count == 16 && memcmp(bytes, shorts, 16) == 0);
    for (i = 0; i < 8; ++i) {
        C_CHECK(longs[i] == shorts[i] * 65536);
        C_CHECK(floats[i] == (float)shorts[i] / 32768.0f);
        C_CHECK(doubles[i] == shorts[i] / 32768.0);
        C_CHECK((int16_t)(packed[3 * i + 1] | packed[3 * i + 2] << 8) == shorts[i] && packed[3 * i] == 0);
    }
    /* The end. */
    C_OK(vorlund_stream_seek_frame(stream, frames - 3));
    C_OK(vorlund_stream_read_float(stream, floats, 4, &count));
    C_CHECK(count == 3);
    C_OK(vorlund_stream_read_float(stream, floats, 4, &count));
    C_CHECK(count == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_frames(stream, 5, bytes, 1, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_float(stream, NULL, 1, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_double(stream, NULL, 1, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_double(stream, doubles, 1, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_read_int16(stream, shorts, 1, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_seek_frame(stream, (uint64_t)1 << 62));
    C_OK(vorlund_release(stream));
    /* Frames are of sound only. */
    C_OK(vorlund_stream_open_memory("abcd", 4, &stream));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_stream_frames(stream, &frames));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_stream_read_int16(stream, shorts, 1, &count));
    C_OK(vorlund_release(stream));
}

/* All frames, in pieces of odd sizes, are what one reading gives. */
static void all_frames_in_pieces(void) {
    static float all[C_RECORDING_FRAMES * 2];
    static float pieces[C_RECORDING_FRAMES * 2];
    vorlund_stream stream = NULL;
    uint32_t count = 0;
    uint32_t filled = 0;
    open_library();
    C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, NULL, &stream));
    C_OK(vorlund_stream_read_float(stream, all, C_RECORDING_FRAMES, &count));
    C_CHECK(count == C_RECORDING_FRAMES);
    C_OK(vorlund_stream_seek(stream, 0));
    while (filled < C_RECORDING_FRAMES) {
        const uint32_t wanted = 7777 < C_RECORDING_FRAMES - filled ? 7777 : C_RECORDING_FRAMES - filled;
        C_OK(vorlund_stream_read_float(stream, pieces + 2 * filled, wanted, &count));
        C_CHECK(count == wanted);
        if (count == 0) break;
        filled += count;
    }
    C_CHECK(memcmp(all, pieces, sizeof(all)) == 0);
}

static void reports_tell_why(void) {
    vorlund_stream stream = NULL;
    vorlund_stream source = NULL;
    vorlund_report report = NULL;
    vorlund_report_entry entry;
    vorlund_decode_options options;
    uint32_t count = 0;
    uint32_t length = 0;
    int32_t furthest = 5;
    char text[512];
    uint16_t wide[64];
    uint32_t wav[4] = {0};
    uint32_t format_id[4] = {0};
    static const uint32_t pcm[4] = VORLUND_FORMAT_AUDIO_PCM;
    open_library();
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    C_OK(vorlund_decode_stream(source, pcm, NULL, &report, &stream));
    C_OK(vorlund_report_count(report, &count));
    C_CHECK(count >= 1);
    entry.size = sizeof(entry);
    C_OK(vorlund_report_get_entry(report, count - 1, &entry));
    C_CHECK(entry.outcome == VORLUND_DECODE_CONNECTED && entry.depth == 0 && entry.bytes_read > 0);
    C_OK(vorlund_report_entry_text(report, count - 1, VORLUND_ENTRY_CLASS, text, sizeof(text), &length));
    C_CHECK(strcmp(text, "vorlund::CWavDecoder") == 0 && length == 20);
    C_OK(vorlund_report_entry_text16(report, count - 1, VORLUND_ENTRY_CONTAINER, wide, 64, &length));
    C_CHECK(length == 3 && wide[0] == 'W' && wide[2] == 'V');
    C_OK(vorlund_report_text(report, VORLUND_REPORT_EXPLANATION, text, sizeof(text), &length));
    C_CHECK(length == 0 && text[0] == 0);
    C_OK(vorlund_report_text16(report, VORLUND_REPORT_WHOLE, NULL, 0, &length));
    C_CHECK(length > 10);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_report_get_entry(report, count, &entry));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_report_entry_text(report, 0, 6, text, sizeof(text), NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_report_text(report, 4, text, sizeof(text), NULL));
    entry.size = 8;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_report_get_entry(report, 0, &entry));
    C_OK(vorlund_release(report));
    /* The chain. */
    C_OK(vorlund_stream_chain_count(stream, &count));
    C_CHECK(count == 2);
    C_OK(vorlund_stream_chain_name(stream, 1, text, sizeof(text), &length));
    C_CHECK(strcmp(text, "vorlund::CFileInputStream") == 0);
    C_OK(vorlund_stream_chain_name16(stream, 0, wide, 64, &length));
    C_CHECK(length == 20 && wide[9] == 'C');
    C_OK(vorlund_stream_chain_ids(stream, 0, wav, format_id));
    C_CHECK(memcmp(format_id, pcm, sizeof(pcm)) == 0);
    C_OK(vorlund_stream_chain_ids(stream, 1, NULL, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_stream_chain_name(stream, 2, text, sizeof(text), NULL));
    C_OK(vorlund_release(stream));
    /* Nothing decodes it without the one decoder. */
    memset(&options, 0, sizeof(options));
    options.size = sizeof(options);
    options.forbidden = wav;
    options.forbidden_count = 1;
    stream = NULL;
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_stream(source, NULL, &options, &report, &stream));
    C_CHECK(stream == NULL && report != NULL);
    C_OK(vorlund_report_get_entry(report, 0, (entry.size = sizeof(entry), &entry)));
    C_OK(vorlund_report_furthest(report, &furthest));
    C_OK(vorlund_report_text(report, VORLUND_REPORT_EXPLANATION, text, sizeof(text), &length));
    C_CHECK(length > 0);
    C_OK(vorlund_release(report));
    options.forbidden = NULL;
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_decode_stream(source, NULL, &options, &report, &stream));
    options.forbidden_count = 0;
    options.preferred = wav;
    options.preferred_count = 1;
    C_OK(vorlund_decode_stream(source, NULL, &options, NULL, &stream));
    C_OK(vorlund_release(stream));
    options.size = 4;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_decode_stream(source, NULL, &options, NULL, &stream));
    /* No sound at all. */
    C_OK(vorlund_release(source));
    C_OK(vorlund_stream_open_memory("fLaC and no more", 16, &source));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_decode_stream(source, NULL, NULL, &report, &stream));
    C_OK(vorlund_report_text(report, VORLUND_REPORT_CONTAINER, text, sizeof(text), NULL));
    C_CHECK(strcmp(text, "FLAC") == 0);
    C_OK(vorlund_report_text(report, VORLUND_REPORT_PLUGIN, text, sizeof(text), NULL));
    C_CHECK(strcmp(text, "sndfile") == 0);
    C_OK(vorlund_report_furthest(report, &furthest));
    C_CHECK(furthest == -1);
    C_OK(vorlund_release(report));
    C_CODE(VORLUND_ERROR_FILE_ACCESS, vorlund_decode_file("no such file", NULL, NULL, &report, &stream));
    C_CHECK(report == NULL);
    C_OK(vorlund_release(source));
}

static const struct c_case cases[] = {
    {"AFileIsRead", a_file_is_read},
    {"NullPointersAreRefused", null_pointers_are_refused},
    {"FramesOfARecording", frames_of_a_recording},
    {"AllFramesInPieces", all_frames_in_pieces},
    {"ReportsTellWhy", reports_tell_why},
};

C_SUITE(CStreams, cases);
