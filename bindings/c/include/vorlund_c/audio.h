/**
 * \file
 * Playing and recording. The devices of the system need the plug-in audio; outputs into nothing and into a
 * file, and an input that hears silence, need neither that nor hardware. Any number of threads may use an
 * output or an input at once.
 *
 * \code{.c}
 * vorlund_output output;
 * vorlund_stream sound;
 * vorlund_audio_format format = {sizeof format, VORLUND_SAMPLE_16BIT, 2, 22050};
 * uint64_t heard = 0;
 * if (vorlund_output_create_file("played.wav", &output) != VORLUND_OK) return;
 * if (vorlund_output_open(output, &format, 0) == VORLUND_OK &&
 *     vorlund_decode_file("strings.wav", NULL, NULL, NULL, &sound) == VORLUND_OK &&
 *     vorlund_output_play(output, sound) == VORLUND_OK && // takes the stream over
 *     vorlund_output_drain(output, NULL) == VORLUND_OK) {
 *     vorlund_output_position(output, &heard);
 *     printf("%d frames\n", (int)heard); // prints 101430 frames
 * }
 * vorlund_release(output);
 * \endcode
 */
#ifndef VORLUND_C_AUDIO_H
#define VORLUND_C_AUDIO_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The devices that there were when they were listed. */
typedef struct vorlund_device_list_object* vorlund_device_list;

/** Kinds of devices. */
enum {
    VORLUND_DEVICE_OUTPUT = 0,
    VORLUND_DEVICE_INPUT = 1,
    VORLUND_DEVICE_LOOPBACK = 2 /**< an input that records what an output plays */
};

/** A device of a list, as it was when the list was made. */
typedef struct vorlund_device_info {
    uint32_t size;      /**< of the record, in bytes */
    int32_t kind;       /**< one of VORLUND_DEVICE_ */
    int32_t is_default; /**< 1 or 0 */
    uint32_t channels;  /**< what the device likes best; 0 where the system does not say */
    uint32_t rate;      /**< the same */
    uint32_t reserved;
} vorlund_device_info;

/** Texts of a device. */
enum {
    VORLUND_DEVICE_TEXT_ID = 0,  /**< by which it is opened */
    VORLUND_DEVICE_TEXT_NAME = 1 /**< for people */
};

/** VORLUND_ERROR_CLASS_NOT_FOUND without the plug-in, VORLUND_ERROR_FAILED without a sound system. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_device_list_create(int32_t kind, vorlund_device_list* list);
VORLUND_C_API int32_t VORLUND_CALL vorlund_device_list_count(vorlund_device_list list, uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_device_list_get(vorlund_device_list list, uint32_t index,
                                                           vorlund_device_info* info);
VORLUND_C_API int32_t VORLUND_CALL vorlund_device_list_text(vorlund_device_list list, uint32_t index,
                                                            int32_t field, char* text, uint32_t room,
                                                            uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_device_list_text16(vorlund_device_list list, uint32_t index,
                                                              int32_t field, uint16_t* text, uint32_t room,
                                                              uint32_t* length);

/** What an output or an input is doing. */
enum {
    VORLUND_AUDIO_CLOSED = 0,
    VORLUND_AUDIO_RUNNING = 1,
    VORLUND_AUDIO_PAUSED = 2,
    VORLUND_AUDIO_LOST = 3 /**< the device is gone, and no other has taken its place */
};

/** Plays sound. */
typedef struct vorlund_output_object* vorlund_output;

/** An output of the system, by the id of a listed device; null for the default one, which is followed. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_create(const char* id, vorlund_output* output);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_create16(const uint16_t* id, vorlund_output* output);
/** An output that drops everything, at the pace of a real clock. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_create_null(vorlund_output* output);
/** An output that writes what it plays into a WAV file, as fast as frames come. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_create_file(const char* path, vorlund_output* output);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_create_file16(const uint16_t* path, vorlund_output* output);

/**
 * Opens the device for frames of a format. `latency` is in seconds, 0.001 to 10, or 0 for that of the device.
 * An open output is closed first.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_open(vorlund_output output,
                                                       const vorlund_audio_format* format, double latency);
/** Drops what is not yet played, and ends every wait. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_close(vorlund_output output);

/**
 * Queues frames, and waits until all are queued; `written`, which may be null, gets fewer bytes only when
 * another thread has closed or flushed the output.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_write(vorlund_output output, const void* bytes,
                                                        uint32_t count, uint32_t* written);
/** How many bytes can be written without waiting. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_writable(vorlund_output output, uint64_t* count);

/**
 * Plays a stream, behind those that were given before, on a thread of the output. The output takes the stream
 * over: its handle is gone, and what it was made from can be used no more until it has ended. When this
 * fails, the handle stays as it was.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_play(vorlund_output output, vorlund_stream stream);
/** How many streams wait, or are not read to their end. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_streams(vorlund_output output, uint32_t* count);
/** Waits until there is none. VORLUND_ERROR_TIMEOUT. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_wait_streams(vorlund_output output, int32_t milliseconds);
/** What the last stream that ended badly has raised, in one line; empty when none has. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_stream_error(vorlund_output output, char* text,
                                                               uint32_t room, uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_stream_error16(vorlund_output output, uint16_t* text,
                                                                 uint32_t room, uint32_t* length);

/**
 * Waits until everything has been heard. `is_drained`, which may be null, gets 0 when another thread has
 * closed or flushed the output, or it is paused.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_drain(vorlund_output output, int32_t* is_drained);
/** Drops what is queued, and the streams. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_flush(vorlund_output output);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_set_paused(vorlund_output output, int32_t is_paused);
/** A factor for every sample, 0 to 16; 1 at first. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_set_volume(vorlund_output output, float volume);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_volume(vorlund_output output, float* volume);
/** Frames that have been heard since it was opened. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_position(vorlund_output output, uint64_t* frames);
/** Frames between the last one queued and the one that is heard now. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_delay(vorlund_output output, uint64_t* frames);
/** How often frames were missing. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_xruns(vorlund_output output, uint64_t* count);
/** One of VORLUND_AUDIO_. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_state(vorlund_output output, int32_t* state);
/** The format that the device takes, and its latency in seconds. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_device_format(vorlund_output output,
                                                                vorlund_audio_format* format);
VORLUND_C_API int32_t VORLUND_CALL vorlund_output_latency(vorlund_output output, double* seconds);

/** Records sound. */
typedef struct vorlund_input_object* vorlund_input;

/** An input of the system, by the id of a listed device; null for the default one. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_create(const char* id, vorlund_input* input);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_create16(const uint16_t* id, vorlund_input* input);
/** An input that hears silence, at the pace of a real clock. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_create_null(vorlund_input* input);
/** As vorlund_output_open; recording begins at once. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_open(vorlund_input input, const vorlund_audio_format* format,
                                                      double latency);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_close(vorlund_input input);
/** What is recorded, as a stream, which is read by one thread; it ends when the input is stopped or closed.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_get_stream(vorlund_input input, vorlund_stream* stream);
/** How many bytes can be read without waiting. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_readable(vorlund_input input, uint64_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_set_paused(vorlund_input input, int32_t is_paused);
/** Ends recording; what was recorded can still be read. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_stop(vorlund_input input);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_position(vorlund_input input, uint64_t* frames);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_xruns(vorlund_input input, uint64_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_input_state(vorlund_input input, int32_t* state);

#ifdef __cplusplus
}
#endif

#endif
