/* Events, timers, outputs and inputs. */
#include "Suite.h"
#include "Threads.h"

#include <stdlib.h>
#include <string.h>

#define C_LONG 60000

static void open_library(void) {
    C_OK(vorlund_open(VORLUND_OPEN_WITHOUT_BOXES));
}

static void events_are_set_and_waited_for(void) {
    vorlund_event events[3] = {NULL, NULL, NULL};
    vorlund_event twice[2];
    uint32_t index = 9;
    int32_t is_set = 9;
    int i;
    open_library();
    for (i = 0; i < 3; ++i) C_OK(vorlund_event_create(&events[i]));
    C_OK(vorlund_event_is_set(events[0], &is_set));
    C_CHECK(is_set == 0);
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait(events[0], 0));
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait_any(events, 3, 1, &index));
    C_CHECK(index == 9);
    C_OK(vorlund_event_set(events[2]));
    C_OK(vorlund_event_wait(events[2], VORLUND_WITHOUT_LIMIT));
    C_OK(vorlund_event_wait_any(events, 3, C_LONG, &index));
    C_CHECK(index == 2);
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait_all(events, 3, 0));
    C_OK(vorlund_event_set(events[0]));
    C_OK(vorlund_event_set(events[1]));
    C_OK(vorlund_event_wait_all(events, 3, C_LONG));
    C_OK(vorlund_event_wait_any(events, 3, C_LONG, &index));
    C_CHECK(index == 0);
    C_OK(vorlund_event_reset(events[0]));
    C_OK(vorlund_event_is_set(events[0], &is_set));
    C_CHECK(is_set == 0);
    twice[0] = twice[1] = events[1];
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_wait_all(twice, 2, 0));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_wait_any(events, 0, 0, &index));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_wait_any(events, 65, 0, &index));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_wait_any(events, 3, 0, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_wait_all(NULL, 3, 0));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_event_wait(NULL, 0));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_create(NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_event_is_set(events[0], NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_timer_start(events[0]));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_timer_stop(events[0]));
    for (i = 0; i < 3; ++i) C_OK(vorlund_release(events[i]));
}

static void timers_set_themselves(void) {
    vorlund_event timer = NULL;
    open_library();
    C_OK(vorlund_timer_create(2, &timer));
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait(timer, 0));
    C_OK(vorlund_timer_start(timer));
    C_OK(vorlund_event_wait(timer, C_LONG));
    C_OK(vorlund_event_reset(timer));
    C_OK(vorlund_event_wait(timer, C_LONG));
    C_OK(vorlund_timer_stop(timer));
    C_OK(vorlund_event_reset(timer));
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait(timer, 0));
    C_OK(vorlund_timer_start(timer));
    C_OK(vorlund_release(timer));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_timer_create(0, &timer));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_timer_create(2147484, &timer));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_timer_create(1, NULL));
}

struct calls {
    vorlund_event called;
    vorlund_event event;
    int frees;
    int32_t code;
};

static void VORLUND_CALL note_call(void* user, vorlund_event event) {
    struct calls* const calls = (struct calls*)user;
    if (calls->frees) calls->code = vorlund_release(event);
    vorlund_event_set(calls->called);
}

static void events_call_the_program(void) {
    struct calls calls;
    memset(&calls, 0, sizeof(calls));
    open_library();
    C_OK(vorlund_event_create(&calls.called));
    C_OK(vorlund_event_create(&calls.event));
    C_OK(vorlund_event_on_set(calls.event, note_call, &calls));
    C_OK(vorlund_event_set(calls.event));
    C_OK(vorlund_event_wait(calls.called, C_LONG));
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait(calls.event, 0));
    C_OK(vorlund_event_reset(calls.called));
    C_OK(vorlund_event_on_set(calls.event, NULL, NULL));
    C_OK(vorlund_event_set(calls.event));
    C_CODE(VORLUND_ERROR_TIMEOUT, vorlund_event_wait(calls.called, 20));
    C_OK(vorlund_event_reset(calls.event));
    /* A call that frees its own event. */
    calls.frees = 1;
    calls.code = -1;
    C_OK(vorlund_event_on_set(calls.event, note_call, &calls));
    C_OK(vorlund_event_set(calls.event));
    C_OK(vorlund_event_wait(calls.called, C_LONG));
    C_CHECK(calls.code == VORLUND_OK);
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_event_set(calls.event));
    C_OK(vorlund_release(calls.called));
}

struct waiter {
    vorlund_event ready;
    vorlund_event go;
    int32_t code;
    int32_t closing;
};

static void wait_in_thread(void* data) {
    struct waiter* const waiter = (struct waiter*)data;
    vorlund_event_set(waiter->ready);
    waiter->code = vorlund_event_wait(waiter->go, C_LONG);
}

static void release_in_thread(void* data) {
    struct waiter* const waiter = (struct waiter*)data;
    waiter->code = vorlund_event_wait(waiter->ready, C_LONG);
    waiter->closing = vorlund_close();
    vorlund_event_set(waiter->go);
}

static void wait_or_release(void* data) {
    struct waiter* const waiter = (struct waiter*)data;
    if (waiter->closing == -1) {
        release_in_thread(waiter);
    } else {
        wait_in_thread(waiter);
    }
}

static void a_wait_keeps_the_library_open(void) {
    struct waiter waiters[2];
    memset(waiters, 0, sizeof(waiters));
    open_library();
    C_OK(vorlund_event_create(&waiters[0].ready));
    C_OK(vorlund_event_create(&waiters[0].go));
    waiters[1] = waiters[0];
    waiters[1].closing = -1;
    c_run_threads(wait_or_release, waiters, sizeof(waiters[0]), 2);
    C_CHECK(waiters[0].code == VORLUND_OK && waiters[1].code == VORLUND_OK);
    /* The other thread may not have begun to wait when it was tried; the library is closed then. */
    C_CHECK(waiters[1].closing == VORLUND_ERROR_BUSY || waiters[1].closing == VORLUND_OK);
}

static void sound_is_played_into_a_file(void) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 2, 22050};
    vorlund_audio_format device;
    vorlund_output output = NULL;
    vorlund_stream stream = NULL;
    vorlund_stream source = NULL;
    uint64_t frames = 0;
    uint32_t count = 9;
    uint32_t length = 9;
    int32_t state = 9;
    int32_t is_drained = 9;
    float volume = 0;
    double latency = -1;
    uint64_t number = 0;
    char text[64];
    uint16_t wide[64];
    static const int16_t silence[400] = {0};
    open_library();
    C_OK(vorlund_output_create_file(c_temporary_file(), &output));
    C_OK(vorlund_output_state(output, &state));
    C_CHECK(state == VORLUND_AUDIO_CLOSED);
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_output_write(output, silence, 800, &count));
    C_OK(vorlund_output_open(output, &format, 0));
    C_OK(vorlund_output_state(output, &state));
    C_CHECK(state == VORLUND_AUDIO_RUNNING);
    C_OK(vorlund_output_write(output, silence, 800, &count));
    C_CHECK(count == 800);
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_output_write(output, silence, 3, NULL));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_output_write(output, NULL, 4, NULL));
    C_OK(vorlund_output_volume(output, &volume));
    C_CHECK(volume == 1);
    C_OK(vorlund_output_set_volume(output, 0.5f));
    C_OK(vorlund_output_set_volume(output, 1));
    C_CODE(VORLUND_ERROR_INVALID_PARAMETER, vorlund_output_set_volume(output, 17));
    C_OK(vorlund_stream_open_file(C_RECORDING, &source));
    C_OK(vorlund_decode_stream(source, NULL, NULL, NULL, &stream));
    C_OK(vorlund_output_play(output, stream));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_release(stream));
    C_CODE(VORLUND_ERROR_HANDLE, vorlund_output_play(output, stream));
    C_OK(vorlund_output_wait_streams(output, C_LONG));
    C_OK(vorlund_output_streams(output, &count));
    C_CHECK(count == 0);
    /* The source is free again. */
    C_OK(vorlund_stream_seek(source, 0));
    C_OK(vorlund_release(source));
    C_OK(vorlund_output_drain(output, &is_drained));
    C_CHECK(is_drained == 1);
    C_OK(vorlund_output_position(output, &frames));
    C_CHECK(frames == 200 + C_RECORDING_FRAMES);
    C_OK(vorlund_output_delay(output, &number));
    C_CHECK(number == 0);
    C_OK(vorlund_output_xruns(output, &number));
    C_CHECK(number == 0);
    C_OK(vorlund_output_writable(output, &number));
    C_CHECK(number > 0);
    C_OK(vorlund_output_latency(output, &latency));
    C_CHECK(latency >= 0);
    device.size = sizeof(device);
    C_OK(vorlund_output_device_format(output, &device));
    C_CHECK(device.channels == 2 && device.rate == 22050);
    C_OK(vorlund_output_stream_error(output, text, sizeof(text), &length));
    C_CHECK(length == 0);
    C_OK(vorlund_output_stream_error16(output, wide, 64, &length));
    C_CHECK(length == 0 && wide[0] == 0);
    C_OK(vorlund_output_set_paused(output, 1));
    C_OK(vorlund_output_state(output, &state));
    C_CHECK(state == VORLUND_AUDIO_PAUSED);
    C_OK(vorlund_output_set_paused(output, 0));
    C_OK(vorlund_output_flush(output));
    C_OK(vorlund_output_close(output));
    C_OK(vorlund_release(output));
    C_OK(vorlund_decode_file(c_temporary_file(), NULL, NULL, NULL, &stream));
    C_OK(vorlund_stream_frames(stream, &frames));
    C_CHECK(frames == 200 + C_RECORDING_FRAMES);
    C_OK(vorlund_release(stream));
}

/* A stream of the program that is played, and what it does while it is read. */
struct played {
    vorlund_output output;
    vorlund_stream stream;
    vorlund_event done;
    int reads;
    int fails;
    int frees;
    int32_t codes[3];
};

static int32_t VORLUND_CALL read_played(void* user, void* buffer, uint32_t size, uint32_t* count) {
    struct played* const played = (struct played*)user;
    if (played->fails) return 99;
    if (played->frees) {
        uint32_t streams = 0;
        played->frees = 0;
        played->codes[0] = vorlund_output_streams(played->output, &streams);
        played->codes[1] = vorlund_release(played->output);
        played->codes[2] = vorlund_output_streams(played->output, &streams);
    }
    if (++played->reads > 20) size = 0;
    memset(buffer, 0, size);
    *count = size;
    return VORLUND_OK;
}

static void VORLUND_CALL release_played(void* user) {
    vorlund_event_set(((struct played*)user)->done);
    ((struct played*)user)->reads = -1;
}

static void play_own_stream(struct played* played) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_FLOAT, 1, 48000};
    vorlund_stream_callbacks callbacks;
    memset(&callbacks, 0, sizeof(callbacks));
    callbacks.size = sizeof(callbacks);
    callbacks.read = read_played;
    callbacks.release = release_played;
    C_OK(vorlund_event_create(&played->done));
    C_OK(vorlund_output_create_null(&played->output));
    C_OK(vorlund_output_open(played->output, &format, 0.05));
    C_OK(vorlund_stream_create(&callbacks, played, &format, &played->stream));
    C_OK(vorlund_output_play(played->output, played->stream));
}

static void a_played_stream_that_fails(void) {
    struct played played;
    char text[256];
    memset(&played, 0, sizeof(played));
    played.fails = 1;
    open_library();
    play_own_stream(&played);
    C_OK(vorlund_output_wait_streams(played.output, C_LONG));
    C_CHECK(played.reads == -1);
    C_OK(vorlund_output_stream_error(played.output, text, sizeof(text), NULL));
    C_CHECK(strstr(text, "A callback failed") != NULL);
    C_OK(vorlund_release(played.output));
    C_OK(vorlund_release(played.done));
}

static void a_played_stream_frees_its_output(void) {
    struct played played;
    int32_t is_open = 0;
    memset(&played, 0, sizeof(played));
    played.frees = 1;
    open_library();
    play_own_stream(&played);
    /* The output goes with the next function of another thread, which may be this wait. */
    do {
        C_OK(vorlund_is_open(&is_open));
    } while (vorlund_event_wait(played.done, 1) == VORLUND_ERROR_TIMEOUT);
    C_CHECK(played.codes[0] == VORLUND_OK && played.codes[1] == VORLUND_OK);
    C_CHECK(played.codes[2] == VORLUND_ERROR_HANDLE);
    C_OK(vorlund_release(played.done));
}

static void a_playing_output_is_freed(void) {
    struct played played;
    memset(&played, 0, sizeof(played));
    open_library();
    play_own_stream(&played);
    C_OK(vorlund_release(played.output));
    C_CHECK(played.reads == -1);
    C_OK(vorlund_release(played.done));
}

static void silence_is_recorded(void) {
    const vorlund_audio_format format = {sizeof(format), VORLUND_SAMPLE_16BIT, 1, 48000};
    const vorlund_audio_format wrong = {sizeof(wrong), VORLUND_SAMPLE_16BIT, 9, 48000};
    vorlund_input input = NULL;
    vorlund_stream stream = NULL;
    int16_t samples[480];
    uint32_t count = 0;
    uint64_t number = 0;
    int32_t state = 9;
    open_library();
    memset(samples, 1, sizeof(samples));
    C_OK(vorlund_input_create_null(&input));
    C_CODE(VORLUND_ERROR_INVALID_STATE, vorlund_input_get_stream(input, &stream));
    C_CODE(VORLUND_ERROR_DATA_FORMAT, vorlund_input_open(input, &wrong, 0));
    C_OK(vorlund_input_open(input, &format, 0));
    C_OK(vorlund_input_get_stream(input, &stream));
    C_OK(vorlund_stream_read_int16(stream, samples, 480, &count));
    C_CHECK(count == 480 && samples[0] == 0 && samples[479] == 0);
    C_OK(vorlund_input_position(input, &number));
    C_CHECK(number >= 480);
    C_OK(vorlund_input_readable(input, &number));
    C_OK(vorlund_input_xruns(input, &number));
    C_OK(vorlund_input_state(input, &state));
    C_CHECK(state == VORLUND_AUDIO_RUNNING);
    C_OK(vorlund_input_set_paused(input, 1));
    C_OK(vorlund_input_set_paused(input, 0));
    C_OK(vorlund_input_stop(input));
    while (count > 0) C_OK(vorlund_stream_read_int16(stream, samples, 480, &count));
    C_OK(vorlund_input_close(input));
    C_OK(vorlund_release(stream));
    C_OK(vorlund_release(input));
}

static void devices_need_the_plugin(void) {
    vorlund_device_list list = NULL;
    vorlund_device_info info;
    vorlund_output output = NULL;
    vorlund_input input = NULL;
    uint32_t count = 0;
    char text[256];
    static const uint16_t id[] = {'x', 0};
    int32_t code;
    open_library();
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_device_list_create(VORLUND_DEVICE_OUTPUT, &list));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_output_create(NULL, &output));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_output_create16(id, &output));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_input_create(NULL, &input));
    C_CODE(VORLUND_ERROR_CLASS_NOT_FOUND, vorlund_input_create16(id, &input));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_device_list_create(3, &list));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_output_create_file(NULL, &output));
    C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_output_create_file16(id, NULL));
    C_OK(vorlund_close());
    C_OK(vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES));
    code = vorlund_device_list_create(VORLUND_DEVICE_OUTPUT, &list);
    C_CHECK(code == VORLUND_OK || code == VORLUND_ERROR_CLASS_NOT_FOUND || code == VORLUND_ERROR_FAILED);
    if (code == VORLUND_OK) {
        C_OK(vorlund_device_list_count(list, &count));
        info.size = sizeof(info);
        if (count > 0) {
            C_OK(vorlund_device_list_get(list, 0, &info));
            C_CHECK(info.kind == VORLUND_DEVICE_OUTPUT);
            C_OK(vorlund_device_list_text(list, 0, VORLUND_DEVICE_TEXT_NAME, text, sizeof(text), NULL));
            C_OK(vorlund_device_list_text16(list, 0, VORLUND_DEVICE_TEXT_ID, NULL, 0, NULL));
            C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_device_list_text(list, 0, 2, text, sizeof(text), NULL));
        }
        C_CODE(VORLUND_ERROR_ARGUMENT, vorlund_device_list_get(list, count, &info));
        C_OK(vorlund_release(list));
    }
}

static const struct c_case cases[] = {
    {"EventsAreSetAndWaitedFor", events_are_set_and_waited_for},
    {"TimersSetThemselves", timers_set_themselves},
    {"EventsCallTheProgram", events_call_the_program},
    {"AWaitKeepsTheLibraryOpen", a_wait_keeps_the_library_open},
    {"SoundIsPlayedIntoAFile", sound_is_played_into_a_file},
    {"APlayedStreamThatFails", a_played_stream_that_fails},
    {"APlayedStreamFreesItsOutput", a_played_stream_frees_its_output},
    {"APlayingOutputIsFreed", a_playing_output_is_freed},
    {"SilenceIsRecorded", silence_is_recorded},
    {"DevicesNeedThePlugin", devices_need_the_plugin},
};

C_SUITE(CDevices, cases);
