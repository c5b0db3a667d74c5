/**
 * \file
 * Decoding: from a file or a stream to sound, pictures or video, and why it went as it did.
 *
 * \code{.c}
 * vorlund_stream sound;
 * uint64_t frames = 0;
 * vorlund_audio_format format = {sizeof format};
 * if (vorlund_decode_file("strings.wav", NULL, NULL, NULL, &sound) != VORLUND_OK) return;
 * vorlund_stream_audio_format(sound, &format);
 * vorlund_stream_frames(sound, &frames);
 * printf("%.1f s\n", (double)frames / format.rate); // prints 4.6 s
 * vorlund_release(sound);
 * \endcode
 */
#ifndef VORLUND_C_DECODE_H
#define VORLUND_C_DECODE_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Identifiers of formats, to initialise an array of four words with. */
#define VORLUND_FORMAT_AUDIO_PCM                                                                             \
    { 0x47A8ECCBU, 0x40364B9FU, 0xA014B125U, 0x721626DFU }
#define VORLUND_FORMAT_IMAGE_RGB                                                                             \
    { 0xA50703CFU, 0x72074A9BU, 0x88FADF0CU, 0xCCB1EEA5U }
#define VORLUND_FORMAT_VIDEO_RGB                                                                             \
    { 0x1EF1EB17U, 0xD158429AU, 0x862DA3D5U, 0x897BF1D1U }

/** What a search for decoders has tried. */
typedef struct vorlund_report_object* vorlund_report;

/** What came of a decoder. */
enum {
    VORLUND_DECODE_CONNECTED = 0,   /**< it took its input */
    VORLUND_DECODE_REFUSED = 1,     /**< it refused it */
    VORLUND_DECODE_UNREADABLE = 2,  /**< its input could not be read */
    VORLUND_DECODE_RAISED = 3,      /**< it failed otherwise, and the search ended */
    VORLUND_DECODE_NOT_CREATED = 4, /**< no object of its class could be made */
    VORLUND_DECODE_FORBIDDEN = 5,   /**< the options forbade it */
    VORLUND_DECODE_DIED = 6         /**< the process in which it was tried died */
};

/** What a search is told beside its input. */
typedef struct vorlund_decode_options {
    uint32_t size; /**< of the record, in bytes */
    /** Classes that are left out, four words each. */
    uint32_t forbidden_count;
    const uint32_t* forbidden;
    /** Classes that are tried before all others, in this order. */
    const uint32_t* preferred;
    uint32_t preferred_count;
    uint32_t reserved; /**< 0 */
} vorlund_decode_options;

/**
 * Decodes a file.
 *
 * \param path     the file
 * \param wanted   the identifier of the format that is wanted; null for PCM; four zeros for whatever the
 *                 decoders make of it
 * \param options  may be null
 * \param report   gets a report, also when nothing decodes the file; may be null. Null after a
 *                 failure that comes before the search, for example that there is no file.
 * \param stream   gets the stream of what was decoded
 *
 * VORLUND_ERROR_DATA_FORMAT when no decoder takes it; the report says why.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_decode_file(const char* path, const uint32_t* wanted,
                                                       const vorlund_decode_options* options,
                                                       vorlund_report* report, vorlund_stream* stream);
VORLUND_C_API int32_t VORLUND_CALL vorlund_decode_file16(const uint16_t* path, const uint32_t* wanted,
                                                         const vorlund_decode_options* options,
                                                         vorlund_report* report, vorlund_stream* stream);

/** The same for a stream, which the new one reads from. A stream of the wanted format is its own result. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_decode_stream(vorlund_stream source, const uint32_t* wanted,
                                                         const vorlund_decode_options* options,
                                                         vorlund_report* report, vorlund_stream* stream);

/** One step of a search. */
typedef struct vorlund_report_entry {
    uint32_t size;          /**< of the record, in bytes */
    int32_t outcome;        /**< one of VORLUND_DECODE_ */
    int32_t depth;          /**< decoders below it in the chain; 0 directly over the source */
    int32_t exception_type; /**< as in vorlund_error; 0 when it was connected */
    uint32_t class_id[4];
    uint64_t bytes_read; /**< what files and resources delivered to it */
    double seconds;      /**< how long it took */
} vorlund_report_entry;

/** Texts of an entry. */
enum {
    VORLUND_ENTRY_CLASS = 0,     /**< the name of its class */
    VORLUND_ENTRY_METHOD = 1,    /**< what raised */
    VORLUND_ENTRY_REASON = 2,    /**< and why */
    VORLUND_ENTRY_CONTAINER = 3, /**< the kind of file that it has recognised */
    VORLUND_ENTRY_VALUES = 4,    /**< the values that it objected to */
    VORLUND_ENTRY_REMARKS = 5    /**< what else it has noted */
};

/** Texts of a whole report. */
enum {
    VORLUND_REPORT_EXPLANATION =
        0, /**< why nothing decodes the input, one sentence; empty when it is decoded */
    VORLUND_REPORT_CONTAINER = 1, /**< the kind of file, when nothing decodes it and it is known */
    VORLUND_REPORT_PLUGIN = 2,    /**< the plug-in that would decode it */
    VORLUND_REPORT_WHOLE = 3      /**< a line for each entry */
};

VORLUND_C_API int32_t VORLUND_CALL vorlund_report_count(vorlund_report report, uint32_t* count);
/** VORLUND_ERROR_ARGUMENT for an index that is not below the count; the same in what follows. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_get_entry(vorlund_report report, uint32_t index,
                                                            vorlund_report_entry* entry);
/** `field` is one of VORLUND_ENTRY_. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_entry_text(vorlund_report report, uint32_t index,
                                                             int32_t field, char* text, uint32_t room,
                                                             uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_entry_text16(vorlund_report report, uint32_t index,
                                                               int32_t field, uint16_t* text, uint32_t room,
                                                               uint32_t* length);
/** The entry that tells best what is wrong with the input; -1 when no decoder has recognised anything. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_furthest(vorlund_report report, int32_t* index);
/** `field` is one of VORLUND_REPORT_. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_text(vorlund_report report, int32_t field, char* text,
                                                       uint32_t room, uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_report_text16(vorlund_report report, int32_t field, uint16_t* text,
                                                         uint32_t room, uint32_t* length);

/** How many streams a stream consists of, from itself, which is 0, down to its source. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_chain_count(vorlund_stream stream, uint32_t* count);
/** The class and the format of one of them, four words each; either may be null. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_chain_ids(vorlund_stream stream, uint32_t index,
                                                            uint32_t* class_id, uint32_t* format_id);
/** The name of its class. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_chain_name(vorlund_stream stream, uint32_t index,
                                                             char* text, uint32_t room, uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_chain_name16(vorlund_stream stream, uint32_t index,
                                                               uint16_t* text, uint32_t room,
                                                               uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
