/* Loads the extension of a wheel for Windows as Python does, beside a python3.dll that has names alone, and uses the library that
 * came with it: writes a FLAC file and reads it again.
 *   load_extension EXTENSION FLAC-FILE */
#include <stdio.h>
#include <string.h>
#include <vorlund_c.h>
#include <windows.h>

#define FRAMES 10000

static int16_t written[2 * FRAMES];
static int16_t read_again[2 * FRAMES];
static HMODULE library;

static int fail(const char* what, long code) {
    printf("%s: %ld\n", what, code);
    return 1;
}

/* The function of that name, of the library that the extension has brought. */
#define CALL(name) ((__typeof__(&name))(void (*)(void))GetProcAddress(library, #name))
#define CHECK(call)                                                                                          \
    do {                                                                                                     \
        const int32_t code = (call);                                                                         \
        if (code != VORLUND_OK) return fail(#call, code);                                                    \
    } while (0)

static int write_file(const char* path) {
    const vorlund_audio_format format = {sizeof format, VORLUND_SAMPLE_16BIT, 2, 44100};
    vorlund_writer writer = NULL;
    for (int i = 0; i < 2 * FRAMES; ++i) written[i] = (int16_t)(i * 7919);
    CHECK(CALL(vorlund_writer_create)("flac", &writer));
    CHECK(CALL(vorlund_writer_open_file)(writer, path, &format));
    CHECK(CALL(vorlund_writer_write)(writer, written, sizeof written));
    CHECK(CALL(vorlund_writer_finish)(writer));
    CHECK(CALL(vorlund_release)(writer));
    return 0;
}

static int read_file(const char* path) {
    vorlund_stream sound = NULL;
    uint32_t count = 0;
    CHECK(CALL(vorlund_decode_file)(path, NULL, NULL, NULL, &sound));
    CHECK(CALL(vorlund_stream_read_frames)(sound, VORLUND_SAMPLE_16BIT, read_again, FRAMES, &count));
    CHECK(CALL(vorlund_release)(sound));
    if (count != FRAMES || memcmp(written, read_again, sizeof written) != 0) return fail("other samples were read", (long)count);
    return 0;
}

/* Whether a module lies in the folder of the extension, or below it. */
static int is_inside(HMODULE module, const char* extension) {
    char path[MAX_PATH];
    if (!module || !GetModuleFileNameA(module, path, MAX_PATH)) return 0;
    printf("%s\n", path);
    return _strnicmp(path, extension, strrchr(extension, '\\') + 1 - extension) == 0;
}

int main(int argc, char** argv) {
    static const char* const names[] = {"vorlund-c-1.dll", "vorlund.dll", "sndfile.dll", "libsndfile.dll"};
    char path[MAX_PATH];
    if (argc != 3 || !GetFullPathNameA(argv[1], MAX_PATH, path, NULL)) return fail("an extension and a file are needed", argc);
    /* The flags of Python: the folder of the extension, that of the program, and the system's. */
    const HMODULE extension =
        LoadLibraryExA(path, NULL, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS | LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR);
    if (!extension) return fail("the extension does not load", (long)GetLastError());
    if (!GetProcAddress(extension, "PyInit__native")) return fail("there is no PyInit__native", 0);
    library = GetModuleHandleA(names[0]);
    if (!library) return fail("the library is not there", 0);
    CHECK(CALL(vorlund_open)(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    if (write_file(argv[2]) || read_file(argv[2])) return 1;
    for (size_t i = 0; i < sizeof names / sizeof *names; ++i)
        if (!is_inside(GetModuleHandleA(names[i]), path)) return fail(names[i], 0);
    CHECK(CALL(vorlund_close)());
    printf("%d frames of FLAC written and read\n", FRAMES);
    return 0;
}
