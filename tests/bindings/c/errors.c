/* Codes, the record of each thread, handles, texts. */
#include "Suite.h"
#include "Threads.h"

#include <string.h>

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

static void nothing_works_before_open(void) {
    vorlund_stream stream = NULL;
    int32_t is_open = 7;
    C_OK(vorlund_is_open(&is_open));
    C_CHECK(is_open == 0);
    C_CODE(VORLUND_ERROR_NOT_OPEN, vorlund_stream_open_file(C_RECORDING, &stream));
    C_CHECK(stream == NULL);
    C_CODE(VORLUND_ERROR_NOT_OPEN, vorlund_close());
    open_library();
    C_OK(vorlund_is_open(&is_open));
    C_CHECK(is_open == 1);
    C_OK(vorlund_stream_open_file(C_RECORDING, &stream));
    C_OK(vorlund_close());
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release(stream));
}

static void openings_are_counted(void) {
    int32_t is_open = 0;
    open_library();
    open_library();
    C_OK(vorlund_close());
    C_OK(vorlund_is_open(&is_open));
    C_CHECK(is_open == 1);
    C_OK(vorlund_close());
    C_CODE(VORLUND_ERROR_NOT_OPEN, vorlund_close());
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_open(4));
    open_library();
    C_OK(vorlund_close());
}

static void a_missing_file_tells_everything(void) {
    vorlund_stream stream = NULL;
    vorlund_error error;
    char text[32];
    uint16_t wide[8];
    uint32_t length = 0;
    open_library();
    C_OK(vorlund_clear_error());
    error.size = sizeof(error);
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.code == VORLUND_OK && error.exception_type == -1);
    C_CODE(VORLUND_ERROR_FILE_ACCESS, vorlund_stream_open_file("no such file", &stream));
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.code == VORLUND_ERROR_FILE_ACCESS && error.exception_type == 3);
    C_CHECK(strcmp(error.type, "CFileAccessException") == 0);
    C_CHECK(strcmp(error.method, "vorlund::CFileInputStream::Open") == 0);
    C_CHECK(strcmp(error.file, "src/vorlund/data/file/FileInputStream_win32") == 0);
    C_CHECK(error.line == 62);
    C_CHECK(strcmp(error.reason, "Cannot open 'no such file' for reading") == 0);
    C_CHECK(strcmp(error.cause, "there is no such file") == 0);
    C_CHECK(error.system_code == 2);
    C_CHECK(error.callback_code == 0);
    /* Texts without pointers, for languages that have none. */
    C_OK(vorlund_error_text(VORLUND_ERROR_TEXT_TYPE, text, sizeof(text), &length));
    C_CHECK(length == 20 && strcmp(text, "CFileAccessException") == 0);
    C_CODE(VORLUND_ERROR_BUFFER, vorlund_error_text(VORLUND_ERROR_TEXT_REASON, text, 7, &length));
    C_CHECK(length == 38 && strcmp(text, "Cannot") == 0);
    C_OK(vorlund_error_text(VORLUND_ERROR_TEXT_METHOD, NULL, 0, &length));
    C_CHECK(length == 31);
    C_CODE(VORLUND_ERROR_BUFFER, vorlund_error_text16(VORLUND_ERROR_TEXT_CAUSE, wide, 8, &length));
    C_CHECK(length == 21 && wide[0] == 't' && wide[6] == 'i' && wide[7] == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_error_text(5, text, sizeof(text), NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_error_text(0, NULL, 1, NULL));
    /* What succeeds leaves it. */
    C_OK(vorlund_stream_open_file(C_RECORDING, &stream));
    C_OK(vorlund_release(stream));
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.code == VORLUND_ERROR_FILE_ACCESS);
}

static void records_of_other_sizes(void) {
    struct {
        vorlund_error error;
        uint32_t behind;
    } larger;
    vorlund_error smaller;
    memset(&larger, 0x55, sizeof(larger));
    memset(&smaller, 0x55, sizeof(smaller));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_last_error(NULL));
    larger.error.size = sizeof(larger);
    C_OK(vorlund_last_error(&larger.error));
    C_CHECK(larger.behind == 0x55555555u && larger.error.size == sizeof(larger));
    smaller.size = (uint32_t)offsetof(vorlund_error, type);
    C_OK(vorlund_last_error(&smaller));
    C_CHECK(smaller.line != 0x55555555);
    C_CHECK(((const unsigned char*)&smaller)[offsetof(vorlund_error, type)] == 0x55);
    smaller.size = 4;
    C_CODE(VORLUND_ERROR_RECORD, vorlund_last_error(&smaller));
}

static void handles_are_checked(void) {
    vorlund_stream stream = NULL;
    vorlund_stream old;
    vorlund_report report = NULL;
    int64_t length = -5;
    uint32_t count = 0;
    int i;
    open_library();
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_length(NULL, &length));
    C_OK(vorlund_decode_file(C_RECORDING, NULL, NULL, &report, &stream));
    /* Of another kind. */
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_length((vorlund_stream)(void*)report, &length));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_report_count((vorlund_report)(void*)stream, &count));
    /* No handles at all. */
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_length((vorlund_stream)(void*)&length, &length));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release((void*)(uintptr_t)12345));
    C_CHECK(length == -5);
    C_OK(vorlund_handle_count(&count));
    C_CHECK(count == 2);
    old = stream;
    C_OK(vorlund_release(stream));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release(stream));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_length(stream, &length));
    C_OK(vorlund_release(NULL));
    /* A freed handle is not that of a later object. */
    for (i = 0; i < 100; ++i) {
        C_OK(vorlund_stream_open_memory("x", 1, &stream));
        C_CHECK(stream != old);
        C_CODE(VORLUND_ERROR_HANDLE, vorlund_stream_length(old, &length));
        C_OK(vorlund_release(stream));
    }
    C_OK(vorlund_release(report));
    C_OK(vorlund_handle_count(&count));
    C_CHECK(count == 0);
}

static void texts_in_both_forms(void) {
    /* A clef beyond the first plane, an umlaut, and a byte that is no character. */
    const char* const utf8 = "a\xC3\xB6\xF0\x9D\x84\x9E\xFF";
    uint16_t wide[8];
    char narrow[16];
    uint32_t length = 0;
    C_OK(vorlund_utf8_to_utf16(utf8, wide, 8, &length));
    C_CHECK(length == 5 && wide[1] == 0xF6 && wide[2] == 0xD834 && wide[3] == 0xDD1E && wide[4] == 0xFFFD);
    C_OK(vorlund_utf16_to_utf8(wide, narrow, sizeof(narrow), &length));
    C_CHECK(length == 10 && strcmp(narrow, "a\xC3\xB6\xF0\x9D\x84\x9E\xEF\xBF\xBD") == 0);
    /* Cut between characters. */
    C_CODE(VORLUND_ERROR_BUFFER, vorlund_utf8_to_utf16(utf8, wide, 4, &length));
    C_CHECK(length == 5 && wide[1] == 0xF6 && wide[2] == 0);
    wide[2] = 0xD834;
    C_CODE(VORLUND_ERROR_BUFFER, vorlund_utf16_to_utf8(wide, narrow, 6, NULL));
    C_CHECK(strcmp(narrow, "a\xC3\xB6") == 0);
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_utf8_to_utf16(NULL, wide, 4, &length));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_utf16_to_utf8(NULL, narrow, 4, &length));
}

struct thread_failure {
    const char* path;
    int32_t code;
    int is_own;
};

static void fail_in_thread(void* data) {
    struct thread_failure* const failure = (struct thread_failure*)data;
    vorlund_stream stream = NULL;
    vorlund_error error;
    int i;
    error.size = sizeof(error);
    vorlund_last_error(&error);
    failure->is_own = error.code == VORLUND_OK;
    for (i = 0; i < 200; ++i) {
        failure->code = vorlund_stream_open_file(failure->path, &stream);
        vorlund_last_error(&error);
        if (strstr(error.reason, failure->path) == NULL) failure->is_own = 0;
    }
}

static void every_thread_has_its_record(void) {
    struct thread_failure failures[3] = {{"no file 1", 0, 0}, {"no file 2", 0, 0}, {"no file 3", 0, 0}};
    vorlund_error error;
    int i;
    open_library();
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release((void*)(uintptr_t)12345));
    c_run_threads(fail_in_thread, failures, sizeof(failures[0]), 3);
    for (i = 0; i < 3; ++i) {
        C_CHECK(failures[i].code == VORLUND_ERROR_FILE_ACCESS);
        C_CHECK(failures[i].is_own);
    }
    error.size = sizeof(error);
    C_OK(vorlund_last_error(&error));
    C_CHECK(error.code == VORLUND_ERROR_HANDLE);
    C_CHECK(strcmp(error.method, "vorlund_release") == 0);
}

/* What several threads do to one stream, which the last of them frees. */
struct user_of_stream {
    vorlund_stream stream;
    int frees;
    int wrong;
};

static void use_in_thread(void* data) {
    struct user_of_stream* const user = (struct user_of_stream*)data;
    float samples[200];
    uint32_t count = 0;
    int i;
    for (i = 0; i < 300; ++i) {
        const int32_t code = i % 7 == 0 ? vorlund_stream_seek_frame(user->stream, (uint32_t)i)
                                        : vorlund_stream_read_float(user->stream, samples, 100, &count);
        /* One of them has the source, whose bytes are no frames. */
        if (code != VORLUND_OK && code != VORLUND_ERROR_BUSY && code != VORLUND_ERROR_HANDLE &&
            code != VORLUND_ERROR_DATA_FORMAT)
            ++user->wrong;
        if (user->frees && i == 200) vorlund_release(user->stream);
    }
}

static void threads_on_one_stream(void) {
    struct user_of_stream users[4];
    vorlund_stream source = NULL;
    vorlund_stream stream = NULL;
    int i;
    open_library();
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
    memset(users, 0, sizeof(users));
    for (i = 0; i < 4; ++i) users[i].stream = stream;
    users[2].stream = source;
    users[3].frees = 1;
    c_run_threads(use_in_thread, users, sizeof(users[0]), 4);
    for (i = 0; i < 4; ++i) C_CHECK(users[i].wrong == 0);
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release(stream));
    C_OK(vorlund_release(source));
}

static void make_and_free_in_thread(void* data) {
    struct user_of_stream* const user = (struct user_of_stream*)data;
    vorlund_stream streams[10];
    int i;
    int j;
    for (i = 0; i < 100; ++i) {
        for (j = 0; j < 10; ++j) {
            if (vorlund_stream_open_memory("bytes", 5, &streams[j]) != VORLUND_OK) ++user->wrong;
        }
        for (j = 0; j < 10; ++j) {
            int64_t length = 0;
            if (vorlund_stream_length(streams[j], &length) != VORLUND_OK || length != 5) ++user->wrong;
            if (vorlund_release(streams[j]) != VORLUND_OK) ++user->wrong;
        }
    }
}

static void threads_with_streams_of_their_own(void) {
    struct user_of_stream users[4];
    uint32_t count = 9;
    int i;
    memset(users, 0, sizeof(users));
    open_library();
    c_run_threads(make_and_free_in_thread, users, sizeof(users[0]), 4);
    for (i = 0; i < 4; ++i) C_CHECK(users[i].wrong == 0);
    C_OK(vorlund_handle_count(&count));
    C_CHECK(count == 0);
}

static void versions(void) {
    int32_t library = 0;
    int32_t c_interface = 0;
    C_OK(vorlund_version(&library, &c_interface));
    C_CHECK(library >= 1000 && c_interface == VORLUND_C_VERSION);
    C_OK(vorlund_version(NULL, NULL));
}

static void VORLUND_CALL count_message(void* user, int32_t destination, const char* text) {
    if (destination == VORLUND_MESSAGE_STDOUT && text[0] != 0) ++*(int*)user;
}

static void messages_come_to_the_program(void) {
    int count = 0;
    C_OK(vorlund_set_message_handler(VORLUND_MESSAGE_STDOUT, count_message, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_set_message_handler(4, count_message, &count));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_set_message_handler(-1, NULL, NULL));
    C_OK(vorlund_set_message_handler(VORLUND_MESSAGE_STDOUT, NULL, NULL));
}

static const struct c_case cases[] = {
    {"NothingWorksBeforeOpen", nothing_works_before_open},
    {"OpeningsAreCounted", openings_are_counted},
    {"AMissingFileTellsEverything", a_missing_file_tells_everything},
    {"RecordsOfOtherSizes", records_of_other_sizes},
    {"HandlesAreChecked", handles_are_checked},
    {"TextsInBothForms", texts_in_both_forms},
    {"EveryThreadHasItsRecord", every_thread_has_its_record},
    {"ThreadsOnOneStream", threads_on_one_stream},
    {"ThreadsWithStreamsOfTheirOwn", threads_with_streams_of_their_own},
    {"Versions", versions},
    {"MessagesComeToTheProgram", messages_come_to_the_program},
};

C_SUITE(CErrors, cases);
