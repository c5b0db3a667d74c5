/// \file
/// Decoders and audio devices of plug-ins that are written in C, or in any language whose compiler speaks its
/// binary interface. Plain C99, also C++, also without a standard library; it needs no other header of the
/// library and no library to link to. docs/plugins-in-c.md goes through a whole plug-in.
///
/// A plug-in exports the two entries of every plug-in, "?VrlInitPlugin@@YA_NXZ" and "?VrlClosePlugin@@YAXXZ",
/// and besides the data symbol "vorlund_plugin_v1", a `vorlund_plugin_table`. A language that exports no data
/// exports the function "vorlund_get_plugin_v1" instead, without arguments, which returns the address of the
/// table. The library reads the table once, after the init entry has returned true, and copies the records;
/// the texts too. What it cannot use it refuses, with a reason in the plug-in's report.
///
/// Rules for all records and functions:
/// - a record begins with its own size, as its author's header had it. Later versions append fields;
/// - functions are `VORLUND_PLUGIN_CALL`, which is `__stdcall` on 32-bit Windows. None is null where it is
///   not said that it may be;
/// - results are `VORLUND_PLUGIN_OK` or the code of a failure. 64-bit numbers come and go by address;
/// - texts are UTF-8 and end with a zero byte; the library reads at most 255 bytes of one and copies it;
/// - no exception may leave a function of the plug-in.
///
/// Since version 0.1.
#pragma once

#include <stdint.h>

/// How functions are called. Only 32-bit x86 on Windows has a choice.
#if defined(_M_IX86) || (defined(__MINGW32__) && defined(__i386__))
#define VORLUND_PLUGIN_CALL __stdcall
#else
#define VORLUND_PLUGIN_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-use-using,readability-identifier-naming): it is C

/// The version of the table below.
#define VORLUND_PLUGIN_TABLE_VERSION 1u

/// Results. Any other number counts as `VORLUND_PLUGIN_FAILED`.
#define VORLUND_PLUGIN_OK 0
/// The data are of another kind: the search asks the next decoder.
#define VORLUND_PLUGIN_OTHER_DATA 1
/// The data are of this kind, and damaged, or in a way that the decoder does not know.
#define VORLUND_PLUGIN_DAMAGED 2
/// The input, or the device, does not deliver.
#define VORLUND_PLUGIN_UNREADABLE 3
#define VORLUND_PLUGIN_NO_MEMORY 4
/// The operation is none that this stream has.
#define VORLUND_PLUGIN_NOT_SUPPORTED 5
#define VORLUND_PLUGIN_FAILED 6

/// An identifier: four words, the first one most significant. Those of classes are made of random numbers.
typedef struct vorlund_plugin_id {
    uint32_t words[4];
} vorlund_plugin_id;

/// The formats of decoded data, as initialisers of `vorlund_plugin_id`.
#define VORLUND_PLUGIN_AUDIO_ID                                                                              \
    {                                                                                                        \
        { 0x47A8ECCBu, 0x40364B9Fu, 0xA014B125u, 0x721626DFu }                                               \
    }
#define VORLUND_PLUGIN_IMAGE_ID                                                                              \
    {                                                                                                        \
        { 0xA50703CFu, 0x72074A9Bu, 0x88FADF0Cu, 0xCCB1EEA5u }                                               \
    }
#define VORLUND_PLUGIN_VIDEO_ID                                                                              \
    {                                                                                                        \
        { 0x1EF1EB17u, 0xD158429Au, 0x862DA3D5u, 0x897BF1D1u }                                               \
    }

/// Samples: unsigned bytes, signed words and double words, and floats with a full scale of 1; in the order of
/// the machine.
#define VORLUND_PLUGIN_SAMPLES_8 0u
#define VORLUND_PLUGIN_SAMPLES_16 1u
#define VORLUND_PLUGIN_SAMPLES_32 2u
#define VORLUND_PLUGIN_SAMPLES_FLOAT 3u

/// Linear PCM, interleaved: `size` is 32.
typedef struct vorlund_plugin_audio {
    vorlund_plugin_id id;
    uint32_t size;
    uint32_t sample_format;
    /// Samples of a frame: 1 to 255.
    uint32_t channels;
    /// Frames per second, not 0.
    uint32_t samples_per_sec;
} vorlund_plugin_audio;

/// The layout of a pixel: bits of each channel, and the position of its lowest bit.
typedef struct vorlund_plugin_pixels {
    /// 0.
    uint32_t type;
    /// 1 to 128.
    uint32_t bits_per_pixel;
    uint32_t alpha_bits;
    uint32_t alpha_shift;
    uint32_t red_bits;
    uint32_t red_shift;
    uint32_t green_bits;
    uint32_t green_shift;
    uint32_t blue_bits;
    uint32_t blue_shift;
} vorlund_plugin_pixels;

/// One image, rows from the top, not padded: `size` is 68. Width and height are not 0.
typedef struct vorlund_plugin_image {
    vorlund_plugin_id id;
    uint32_t size;
    vorlund_plugin_pixels pixels;
    uint32_t width;
    uint32_t height;
} vorlund_plugin_image;

/// Images of one format, `frame_rate` per second: `size` is 92, and `image` a whole record of its own.
typedef struct vorlund_plugin_video {
    vorlund_plugin_id id;
    uint32_t size;
    vorlund_plugin_image image;
    float frame_rate;
} vorlund_plugin_video;

/// A format record: which one says `head.id`. Those of other formats may have up to 256 bytes.
typedef union vorlund_plugin_format {
    struct {
        vorlund_plugin_id id;
        uint32_t size;
    } head;
    vorlund_plugin_audio audio;
    vorlund_plugin_image image;
    vorlund_plugin_video video;
    uint32_t words[64];
} vorlund_plugin_format;

typedef struct vorlund_plugin_input vorlund_plugin_input;

/// What a decoder reads from. The library makes it; it lives until the decoder's `close` has returned, or
/// `recognise`, or an `open` that failed. Only inside of calls of the decoder's functions, on their thread.
struct vorlund_plugin_input {
    uint32_t size;
    /// Not 0 when `seek` and `tell` work.
    uint32_t has_positions;
    /// Reads at most `size` bytes; `*count` is how many, and 0 at the end.
    int32_t(VORLUND_PLUGIN_CALL* read)(const vorlund_plugin_input* input, void* buffer, uint32_t size,
                                       uint32_t* count);
    /// The position in bytes from the start.
    int32_t(VORLUND_PLUGIN_CALL* seek)(const vorlund_plugin_input* input, const int64_t* position);
    int32_t(VORLUND_PLUGIN_CALL* tell)(const vorlund_plugin_input* input, int64_t* position);
    /// In bytes.
    int32_t(VORLUND_PLUGIN_CALL* length)(const vorlund_plugin_input* input, int64_t* length);
    /// The format of the bytes; for decoders with a source format.
    int32_t(VORLUND_PLUGIN_CALL* format)(const vorlund_plugin_input* input, vorlund_plugin_format* format);
    /// The reason of the failure that the running function is about to return, for reports and exceptions.
    void(VORLUND_PLUGIN_CALL* explain)(const vorlund_plugin_input* input, const char* reason);
    /// For the report of a search, in `open`: the decoder has recognised its container, "FLAC"; the value
    /// because of which it refuses its input, "bits" 20; and what else users may want to know.
    void(VORLUND_PLUGIN_CALL* note_container)(const vorlund_plugin_input* input, const char* name);
    void(VORLUND_PLUGIN_CALL* note_value)(const vorlund_plugin_input* input, const char* name,
                                          const int64_t* value);
    void(VORLUND_PLUGIN_CALL* note_remark)(const vorlund_plugin_input* input, const char* text);
};

/// What `open` of a decoder fills in. The library has set `size`, and zeros.
typedef struct vorlund_plugin_opened {
    uint32_t size;
    /// 0.
    uint32_t reserved;
    /// Of the decoded data in bytes, or -1 when it is not known before the end. More is never read.
    int64_t length;
    /// The plug-in's own, any value; with an `instance_size`, that block.
    void* instance;
    /// Of the decoded data: the decoder's `result_format`.
    vorlund_plugin_format format;
} vorlund_plugin_opened;

typedef struct vorlund_plugin_decoder vorlund_plugin_decoder;

/// A decoder class. One thread at a time uses an instance; several instances may be used at a time.
struct vorlund_plugin_decoder {
    uint32_t size;
    /// Not 0: the library makes an instance of so many bytes, at most 16 MiB, all zero, before `open`, and
    /// frees it after `close`.
    uint32_t instance_size;
    vorlund_plugin_id class_id;
    /// As in "sample::CDecoder".
    const char* class_name;
    /// Of the data that it reads; zeros when it looks at the bytes itself.
    vorlund_plugin_id source_format;
    /// Of the data that it makes.
    vorlund_plugin_id result_format;
    /// May be null. Whether the input may be for this decoder, at little cost and without a trace: searches
    /// ask this first, of every file. `VORLUND_PLUGIN_OK`, or a failure as `open` has it.
    int32_t(VORLUND_PLUGIN_CALL* recognise)(const vorlund_plugin_decoder* decoder,
                                            const vorlund_plugin_input* input);
    /// Begins to decode. The input is at its start, if it has positions, as for `recognise`. `decoder` is the
    /// plug-in's own record.
    int32_t(VORLUND_PLUGIN_CALL* open)(const vorlund_plugin_decoder* decoder,
                                       const vorlund_plugin_input* input, vorlund_plugin_opened* opened);
    /// Reads at most `size` bytes, which is not 0; `*count` is how many, and 0 at the end.
    int32_t(VORLUND_PLUGIN_CALL* read)(void* instance, void* buffer, uint32_t size, uint32_t* count);
    /// May be null: then the stream goes forward only. The position is that of a decoded byte, from 0 to the
    /// length, inside of a frame too.
    int32_t(VORLUND_PLUGIN_CALL* seek)(void* instance, const int64_t* position);
    /// Gives back what `open` took. Does not come after an `open` that failed.
    void(VORLUND_PLUGIN_CALL* close)(void* instance);
};

/// How a device moves frames. A wish of 0 for the last two leaves it to the device.
typedef struct vorlund_plugin_port_format {
    uint32_t size;
    uint32_t sample_format;
    uint32_t channels;
    uint32_t samples_per_sec;
    /// Frames of a usual call of `process`: 1 to 65536.
    uint32_t period_frames;
    /// How many of them are kept ready: at least 1, and at most 1048576 frames in all.
    uint32_t periods;
} vorlund_plugin_port_format;

typedef struct vorlund_plugin_client vorlund_plugin_client;

/// Whom a device calls, from a thread of its own, one call at a time. The library makes it; it lives until
/// `close` has returned.
struct vorlund_plugin_client {
    uint32_t size;
    /// 0.
    uint32_t reserved;
    /// Output: fills `buffer` with the next frames, silence where there are none. Input: takes them. Between
    /// `start` and the return of `stop`; does not wait.
    void(VORLUND_PLUGIN_CALL* process)(const vorlund_plugin_client* client, void* buffer, uint32_t frames);
    /// The device has lost frames, `count` times.
    void(VORLUND_PLUGIN_CALL* note_xruns)(const vorlund_plugin_client* client, uint32_t count);
    /// The device is gone. May come twice, from any thread, until `close` returns.
    void(VORLUND_PLUGIN_CALL* note_lost)(const vorlund_plugin_client* client);
    /// The reason of the failure that `open` or `start` is about to return; on their thread.
    void(VORLUND_PLUGIN_CALL* explain)(const vorlund_plugin_client* client, const char* reason);
};

/// Kinds of devices. An output becomes the audio device of applications, unless another plug-in's was
/// registered before; both are made by their class.
#define VORLUND_PLUGIN_AUDIO_OUTPUT 1u
#define VORLUND_PLUGIN_AUDIO_INPUT 2u

typedef struct vorlund_plugin_device vorlund_plugin_device;

/// A class of audio devices. The library converts formats and keeps what is to be played; the plug-in moves
/// blocks of frames. One thread at a time calls an instance, but for `delay`.
struct vorlund_plugin_device {
    uint32_t size;
    /// One of the above.
    uint32_t kind;
    vorlund_plugin_id class_id;
    const char* class_name;
    /// Not 0: a lost device is opened again, until that works.
    uint32_t reopens;
    /// 0.
    uint32_t reserved;
    /// Opens the device; nothing moves yet. `format` is a wish, and then what is near to it.
    int32_t(VORLUND_PLUGIN_CALL* open)(const vorlund_plugin_device* device,
                                       const vorlund_plugin_client* client,
                                       vorlund_plugin_port_format* format, void** instance);
    /// Begins to call `process`.
    int32_t(VORLUND_PLUGIN_CALL* start)(void* instance);
    /// Ends that: no call comes, and none is going on, when it returns.
    void(VORLUND_PLUGIN_CALL* stop)(void* instance);
    /// Gives the device back. It is stopped.
    void(VORLUND_PLUGIN_CALL* close)(void* instance);
    /// May be null. Frames between the last call of `process` and what is heard, or the other way; any
    /// thread, between `open` and `close`.
    uint32_t(VORLUND_PLUGIN_CALL* delay)(void* instance);
};

/// What a plug-in exports as "vorlund_plugin_v1". It and what it points to stay as they are until the close
/// entry is called.
typedef struct vorlund_plugin_table {
    uint32_t size;
    /// `VORLUND_PLUGIN_TABLE_VERSION`.
    uint32_t version;
    /// At most 64 of each; a list without items may be null.
    uint32_t decoder_count;
    uint32_t device_count;
    const vorlund_plugin_decoder* const* decoders;
    const vorlund_plugin_device* const* devices;
} vorlund_plugin_table;

/// What the plug-in says of itself, in the section ".vrlinfo" of its file: the layout of `TPluginInfoRecord`
/// (PluginInfo.h).
typedef struct vorlund_plugin_info {
    /// "VRLINFO" and a zero byte.
    char mark[8];
    uint32_t size;
    /// 0: the plug-in uses nothing of the library but its table, which has a version of its own.
    int32_t library_version;
    char name[64];
    char version[32];
    char licence[64];
} vorlund_plugin_info;

/// Defines that record, once, outside all functions: three literals, as `VRL_PLUGIN_INFO` takes them.
#define VORLUND_PLUGIN_INFO(name, version, licence)                                                          \
    VORLUND_PLUGIN_INFO_SECTION const vorlund_plugin_info vorlund_plugin_info_record = {                     \
        "VRLINFO", sizeof(vorlund_plugin_info), 0, name, version, licence};

#if defined(_MSC_VER) && !defined(__clang__)
#pragma section(".vrlinfo", read)
#define VORLUND_PLUGIN_INFO_SECTION                                                                          \
    extern const vorlund_plugin_info vorlund_plugin_info_record;                                             \
    __declspec(allocate(".vrlinfo"))
#else
#define VORLUND_PLUGIN_INFO_SECTION                                                                          \
    extern const vorlund_plugin_info vorlund_plugin_info_record;                                             \
    __attribute__((used, section(".vrlinfo")))
#endif

// NOLINTEND(modernize-use-using,readability-identifier-naming)

#ifdef __cplusplus
}
#endif
