/* Decodes a sound file to raw 16-bit samples: example_11-c-host [FILE [OUT]]. In C, as from every other language. */
#include <stdio.h>
#include <vorlund_c.h>

/* Says what went wrong, with everything that is known. */
static int Fail(const char* what) {
    vorlund_error error;
    error.size = sizeof(error);
    vorlund_last_error(&error);
    fprintf(stderr, "%s: %s", what, error.reason);
    if (error.cause[0] != 0) fprintf(stderr, ", because %s", error.cause);
    fprintf(stderr, " (%s of %s)\n", error.type, error.method);
    return 1;
}

/* Why nothing decodes the file, and which plug-in would. */
static int Explain(const char* file, vorlund_report report) {
    char text[512];
    const int result = Fail(file);
    if (report && vorlund_report_text(report, VORLUND_REPORT_EXPLANATION, text, sizeof(text), NULL) == VORLUND_OK &&
        text[0] != 0)
        fprintf(stderr, "%s: %s\n", file, text);
    return result;
}

static int Decode(const char* file, FILE* out) {
    vorlund_report report = NULL;
    vorlund_stream sound = NULL;
    vorlund_audio_format format;
    int16_t samples[8192];
    uint32_t count = 0;
    uint64_t frames = 0;

    format.size = sizeof(format);
    if (vorlund_decode_file(file, NULL, NULL, &report, &sound) != VORLUND_OK) return Explain(file, report);
    if (vorlund_stream_audio_format(sound, &format) != VORLUND_OK) return Fail(file);
    if (format.channels > 8192) return 1;
    do {
        if (vorlund_stream_read_int16(sound, samples, 8192 / format.channels, &count) != VORLUND_OK) return Fail(file);
        if (out) fwrite(samples, sizeof(int16_t) * format.channels, count, out);
        frames += count;
    } while (count > 0);
    printf("%lu frames of %u channels at %u Hz\n", (unsigned long)frames, (unsigned)format.channels,
           (unsigned)format.rate);

    /* What is not freed here, vorlund_close frees. */
    vorlund_release(sound);
    vorlund_release(report);
    return 0;
}

int main(int argc, char** argv) {
    FILE* out = NULL;
    int result;
    if (argc > 2) {
        out = fopen(argv[2], "wb");
        if (!out) return 1;
    }
    if (vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS) != VORLUND_OK) return Fail("open");
    result = Decode(argc > 1 ? argv[1] : "strings.wav", out);
    vorlund_close();
    if (out && fclose(out) != 0) result = 1;
    return result;
}
