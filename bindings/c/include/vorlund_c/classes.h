/**
 * \file
 * Classes by name and identifier, filters of any class, the lists of decoders and encoders, and decoders of
 * the program.
 *
 * \code{.c}
 * vorlund_object object;
 * uint32_t id[4];
 * if (vorlund_class_find("vorlund::CRandomGenerator", id) != VORLUND_OK) return;
 * if (vorlund_object_create(id, &object) == VORLUND_OK) {
 *     vorlund_stream bytes;
 *     if (vorlund_object_get_stream(object, &bytes) == VORLUND_OK) printf("a stream\n"); // prints a stream
 *     vorlund_release(object);
 * }
 * \endcode
 */
#ifndef VORLUND_C_CLASSES_H
#define VORLUND_C_CLASSES_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** How many classes are registered, and the identifier, four words, and the name of one of them. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_count(uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_id(uint32_t index, uint32_t* id);
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_name(uint32_t index, char* text, uint32_t room,
                                                      uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_name16(uint32_t index, uint16_t* text, uint32_t room,
                                                        uint32_t* length);
/** The identifier of a class by its name. VORLUND_ERROR_CLASS_NOT_FOUND. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_find(const char* name, uint32_t* id);
VORLUND_C_API int32_t VORLUND_CALL vorlund_class_find16(const uint16_t* name, uint32_t* id);

/** An object of any class. */
typedef struct vorlund_object_object* vorlund_object;

/** Makes an object of a class. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_create(const uint32_t* class_id, vorlund_object* object);
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_create_named(const char* name, vorlund_object* object);
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_create_named16(const uint16_t* name,
                                                                 vorlund_object* object);
/** Its class, four words, and its serial number; either may be null. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_info(vorlund_object object, uint32_t* class_id,
                                                       int32_t* number);
/** Whether it has an interface, by its identifier: 1 or 0. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_has_interface(vorlund_object object,
                                                                const uint32_t* interface_id,
                                                                int32_t* has_interface);
/** The object as a stream that is read; VORLUND_ERROR_NOT_SUPPORTED when it is none. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_get_stream(vorlund_object object, vorlund_stream* stream);
/**
 * Connects the object, a filter, to a stream, and gives it as a stream; the handle of the object is gone
 * then. VORLUND_ERROR_NOT_SUPPORTED when it is no filter.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_object_connect(vorlund_object object, vorlund_stream source,
                                                          vorlund_stream* stream);

/** Decoders and encoders: how many are registered, and of one its class and formats, four words each. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_decoder_count(uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_decoder_ids(uint32_t index, uint32_t* class_id, uint32_t* input_id,
                                                       uint32_t* output_id);
VORLUND_C_API int32_t VORLUND_CALL vorlund_encoder_count(uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_encoder_ids(uint32_t index, uint32_t* class_id, uint32_t* input_id,
                                                       uint32_t* output_id);

/**
 * \name Decoders of the program
 * Callbacks return VORLUND_OK, or any other number when they fail, and may come from any thread that decodes.
 * @{
 */

/** What vorlund_decoder_callbacks::connect returns for data that are not its own; the search then goes on. */
#define VORLUND_REFUSED 1

/**
 * Begins to decode a stream, which stands anywhere: seek before you read. The handle is the program's until
 * `disconnect` and is not freed; it is read in `connect`, `read`, `seek` and `length` only. `format` gets
 * what the decoder delivers, its size is set; `decoder` a value that the other callbacks are called with.
 */
typedef int32_t(VORLUND_CALL* vorlund_connect_callback)(void* user, vorlund_stream source,
                                                        vorlund_audio_format* format, void** decoder);

/** The functions of a decoder of the program. */
typedef struct vorlund_decoder_callbacks {
    uint32_t size; /**< of the record, in bytes */
    uint32_t reserved;
    vorlund_connect_callback connect;
    vorlund_read_callback read;
    /** Bytes of what is delivered. Null for a decoder without positions. */
    vorlund_seek_callback seek;
    /** Null when the length is not known. */
    vorlund_length_callback length;
    /** Ends a connection that `connect` has begun well. May be null. */
    vorlund_release_callback disconnect;
} vorlund_decoder_callbacks;

/** The most decoders of a program. */
#define VORLUND_MOST_DECODERS 64

/**
 * Registers a decoder from raw bytes to PCM, until the library is closed. Every search tries it behind those
 * that are registered before.
 *
 * \param class_id   four words that nobody else uses
 * \param name       the name of the class, "mine::Decoder"
 * \param callbacks  the decoder's functions; the record is copied
 * \param user       what `connect` is called with
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_decoder_register(const uint32_t* class_id, const char* name,
                                                            const vorlund_decoder_callbacks* callbacks,
                                                            void* user);
VORLUND_C_API int32_t VORLUND_CALL vorlund_decoder_register16(const uint32_t* class_id, const uint16_t* name,
                                                              const vorlund_decoder_callbacks* callbacks,
                                                              void* user);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
