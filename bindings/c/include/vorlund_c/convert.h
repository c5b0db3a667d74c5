/**
 * \file
 * Sound in another form: sample formats, numbers of channels, rates; of streams and of plain buffers.
 *
 * \code{.c}
 * vorlund_stream sound, mono;
 * vorlund_conversion wish = {sizeof wish};
 * int64_t length = 0;
 * wish.sample_format = VORLUND_SAMPLE_16BIT;
 * wish.channels = 1;
 * if (vorlund_decode_file("strings.wav", NULL, NULL, NULL, &sound) != VORLUND_OK) return;
 * if (vorlund_convert_stream(sound, &wish, &mono) != VORLUND_OK) return; // vorlund_close frees
 * vorlund_stream_length(mono, &length);
 * printf("%d bytes\n", (int)length); // prints 202860 bytes
 * vorlund_release(mono);
 * vorlund_release(sound);
 * \endcode
 */
#ifndef VORLUND_C_CONVERT_H
#define VORLUND_C_CONVERT_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** For vorlund_conversion: the sample format of the source. */
#define VORLUND_SAMPLE_KEEP 0xFFFFFFFFU

/** Qualities of resampling, from the fastest to the best. */
enum {
    VORLUND_QUALITY_QUICK = 0,
    VORLUND_QUALITY_LOW = 1,
    VORLUND_QUALITY_MEDIUM = 2,
    VORLUND_QUALITY_HIGH = 3,
    VORLUND_QUALITY_BEST = 4
};

/** What a stream of sound becomes. */
typedef struct vorlund_conversion {
    uint32_t size;          /**< of the record, in bytes */
    uint32_t sample_format; /**< one of VORLUND_SAMPLE_ up to FLOAT, or VORLUND_SAMPLE_KEEP */
    uint32_t channels;      /**< 1 to 8; 0 for those of the source */
    uint32_t rate;          /**< 0 for that of the source */
    uint32_t quality;       /**< one of VORLUND_QUALITY_ */
    uint32_t dithers;       /**< 1 for triangular dither where bits are lost, 0 for none */
    uint64_t seed;          /**< of the dither */
    uint32_t clips_floats;  /**< 1: floats are kept within -1.0 and 1.0 */
    uint32_t reserved;      /**< 0 */
} vorlund_conversion;

/**
 * A stream that decodes `source` if need be and delivers it in another form, at true scale, clipped where
 * samples are integers. Other rates need the plug-in resample: VORLUND_ERROR_CLASS_NOT_FOUND without it.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_convert_stream(vorlund_stream source,
                                                          const vorlund_conversion* conversion,
                                                          vorlund_stream* stream);

/**
 * Converts frames of a buffer. The two buffers must not overlap.
 *
 * \param destination  room for the converted frames
 * \param source       the frames, channels interleaved
 * \param to, from     one of VORLUND_SAMPLE_
 * \param channels     samples of a frame
 * \param frames       how many frames
 * \param clipped      gets the number of samples that were beyond the range; may be null
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_convert_samples(void* destination, uint32_t to, const void* source,
                                                           uint32_t from, uint32_t channels, uint32_t frames,
                                                           uint64_t* clipped);

/**
 * Mixes frames of floats to another number of channels, 1 to 8 each, in the usual order of loudspeakers, so
 * that nothing gets louder than full scale.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_mix_samples(float* destination, uint32_t to_channels,
                                                       const float* source, uint32_t from_channels,
                                                       uint32_t frames);

/** How many frames a sound has at another rate. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resampled_frames(uint64_t frames, uint32_t from_rate,
                                                            uint32_t to_rate, uint64_t* result);
VORLUND_C_API int32_t VORLUND_CALL vorlund_resampled_frames_ptr(const uint64_t* frames, uint32_t from_rate,
                                                                uint32_t to_rate, uint64_t* result);

/**
 * Resamples a whole sound of floats. `destination` has room for `room` frames; VORLUND_ERROR_ARGUMENT when
 * those are less than vorlund_resampled_frames says. Needs the plug-in resample.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resample(float* destination, uint32_t room, const float* source,
                                                    uint32_t frames, uint32_t channels, uint32_t from_rate,
                                                    uint32_t to_rate, uint32_t quality);

#ifdef __cplusplus
}
#endif

#endif
