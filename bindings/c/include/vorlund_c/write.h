/**
 * \file
 * Writing sound files: WAV by the library itself, other kinds by the encoders of plug-ins.
 *
 * \code{.c}
 * vorlund_writer writer;
 * vorlund_audio_format format = {sizeof format, VORLUND_SAMPLE_16BIT, 1, 8000};
 * int16_t samples[8000] = {0};
 * if (vorlund_writer_create("wav", &writer) != VORLUND_OK) return;
 * if (vorlund_writer_open_file(writer, "silence.wav", &format) == VORLUND_OK &&
 *     vorlund_writer_write(writer, samples, sizeof samples) == VORLUND_OK &&
 *     vorlund_writer_finish(writer) == VORLUND_OK)
 *     printf("written\n"); // prints written
 * vorlund_release(writer);
 * \endcode
 */
#ifndef VORLUND_C_WRITE_H
#define VORLUND_C_WRITE_H

#include "sink.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Writes a sound file. In this order: vorlund_writer_create, options and tags, vorlund_writer_open_file or
 * vorlund_writer_open_sink, vorlund_writer_write, vorlund_writer_finish, vorlund_release. A file that is not
 * finished may not open; of WAV files all but the last second does.
 */
typedef struct vorlund_writer_object* vorlund_writer;

/**
 * A writer for one kind of file.
 *
 * \param kind    "wav", "aiff", "flac", "mp3", "ogg" (Vorbis) or "opus". All but the first need a plug-in,
 *                sndfile for example: VORLUND_ERROR_CLASS_NOT_FOUND without it.
 * \param writer  gets the handle
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_create(const char* kind, vorlund_writer* writer);
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_create16(const uint16_t* kind, vorlund_writer* writer);

/** An option of the encoder, as the page of its plug-in lists them; "wav" has none. Before it is opened. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_option(vorlund_writer writer, const char* name,
                                                         const char* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_option16(vorlund_writer writer, const uint16_t* name,
                                                           const uint16_t* value);
/** A text about the sound: "title", "artist". For "wav" the name is an id of four characters, "INAM". */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_tag(vorlund_writer writer, const char* name,
                                                      const char* text);
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_tag16(vorlund_writer writer, const uint16_t* name,
                                                        const uint16_t* text);

/** Begins a file, which is emptied. `format` is what is going to be written; 24 bits are for "wav" only. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_open_file(vorlund_writer writer, const char* path,
                                                            const vorlund_audio_format* format);
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_open_file16(vorlund_writer writer, const uint16_t* path,
                                                              const vorlund_audio_format* format);
/** The same into a sink, from where that is. The sink is used by the writer alone until it is finished. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_open_sink(vorlund_writer writer, vorlund_sink sink,
                                                            const vorlund_audio_format* format);

/** Appends samples in the format that was given. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_write(vorlund_writer writer, const void* bytes,
                                                        uint32_t count);
/** Appends frames of samples of another type, which are converted at true scale and clipped. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_write_frames(vorlund_writer writer, uint32_t sample_format,
                                                               const void* samples, uint32_t frames);
/** Appends all that is left of a stream of the same channels and rate; `frames`, which may be null, how much.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_write_stream(vorlund_writer writer, vorlund_stream stream,
                                                               uint64_t* frames);

/**
 * Completes the file, and closes it when the writer has opened it. When it succeeds, all of it has reached
 * the system, or the sink.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_writer_finish(vorlund_writer writer);

#ifdef __cplusplus
}
#endif

#endif
