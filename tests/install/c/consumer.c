/* Uses the installed C interface as an application does: c_consumer FILE PLUGIN. Decodes the file, then loads the plug-in
   of docs/plugins-in-c.md and decodes what only that knows. The exit code tells which expectation failed. */
#include <stdio.h>
#include <vorlund_c.h>

/* Reads all frames; returns how many, or -1. */
static long CountFrames(vorlund_stream sound) {
    int16_t samples[1024];
    vorlund_audio_format format;
    uint32_t count = 0;
    long frames = 0;
    format.size = sizeof(format);
    if (vorlund_stream_audio_format(sound, &format) != VORLUND_OK || format.channels > 1024) return -1;
    do {
        if (vorlund_stream_read_int16(sound, samples, 1024 / format.channels, &count) != VORLUND_OK) return -1;
        frames += (long)count;
    } while (count > 0);
    return frames;
}

/* What the installed plug-ins have come to: how many were loaded. */
static unsigned CountLoadedPlugins(void) {
    vorlund_plugin_report report;
    uint32_t count = 0;
    uint32_t i;
    unsigned loaded = 0;
    if (vorlund_plugin_report_count(&count) != VORLUND_OK) return 0;
    for (i = 0; i < count; ++i) {
        report.size = sizeof(report);
        if (vorlund_plugin_get_report(i, &report) == VORLUND_OK && report.outcome == VORLUND_PLUGIN_LOADED) ++loaded;
    }
    return loaded;
}

/* A failure is a code, and has a reason. */
static int Refuses(void) {
    vorlund_stream sound = NULL;
    vorlund_error error;
    error.size = sizeof(error);
    return vorlund_decode_file("no such file.wav", NULL, NULL, NULL, &sound) != VORLUND_OK && !sound &&
           vorlund_last_error(&error) == VORLUND_OK && error.code != VORLUND_OK && error.reason[0] != 0;
}

/* One second of the plug-in's sound. */
static long CountTone(const char* plugin) {
    vorlund_stream source = NULL;
    vorlund_stream sound = NULL;
    int32_t outcome = -1;
    long frames = -1;
    if (vorlund_plugin_load_file(plugin, &outcome) != VORLUND_OK || outcome != VORLUND_PLUGIN_LOADED) return -1;
    if (vorlund_stream_open_memory("TONE", 4, &source) != VORLUND_OK) return -1;
    if (vorlund_decode_stream(source, NULL, NULL, NULL, &sound) == VORLUND_OK) frames = CountFrames(sound);
    vorlund_release(sound);
    vorlund_release(source);
    return frames;
}

int main(int argc, char** argv) {
    vorlund_stream sound = NULL;
    uint64_t wanted = 0;
    uint32_t handles = 1;
    unsigned loaded;
    long frames;
    long tone;

    if (argc != 3) return 1;
    if (vorlund_decode_file(argv[1], NULL, NULL, NULL, &sound) != VORLUND_ERROR_NOT_OPEN) return 2;
    if (vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES) != VORLUND_OK) return 3;
    loaded = CountLoadedPlugins();
    if (loaded == 0) return 4;
    if (!Refuses()) return 5;
    if (vorlund_decode_file(argv[1], NULL, NULL, NULL, &sound) != VORLUND_OK) return 6;
    if (vorlund_stream_frames(sound, &wanted) != VORLUND_OK) return 7;
    frames = CountFrames(sound);
    if (frames <= 0 || (uint64_t)frames != wanted) return 8;
    vorlund_release(sound);
    tone = CountTone(argv[2]);
    if (tone != 8000) return 9;
    if (vorlund_handle_count(&handles) != VORLUND_OK || handles != 0) return 10;
    if (vorlund_close() != VORLUND_OK) return 11;
    printf("c_consumer: %u plug-ins, %ld frames, %ld of the tone\n", loaded, frames, tone);
    return 0;
}
