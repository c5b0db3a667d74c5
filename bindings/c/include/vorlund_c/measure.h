/**
 * \file
 * How loud a sound is, and what is wrong with it. Needs the plug-in measure: VORLUND_ERROR_CLASS_NOT_FOUND
 * without it.
 */
#ifndef VORLUND_C_MEASURE_H
#define VORLUND_C_MEASURE_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What was measured in all channels together. Levels are factors of full scale, 1 for the sample 1.0. */
typedef struct vorlund_levels {
    uint32_t size; /**< of the record, in bytes */
    uint32_t reserved;
    uint64_t frames;
    double peak;         /**< the sample furthest from 0 */
    uint64_t peak_frame; /**< its frame */
    double true_peak;    /**< of the signal between the samples (ITU-R BS.1770-4) */
    double rms;          /**< root of the mean square of all samples */
    double
        integrated; /**< loudness in LUFS, gated (EBU R 128); minus infinity for silence, or below 400 ms */
    double range;   /**< loudness range in LU (EBU Tech 3342); 0 below 3 s */
    double momentary_max;     /**< the highest loudness of 400 ms, in LUFS */
    double short_term_max;    /**< the highest loudness of 3 s, in LUFS */
    uint64_t clipped_samples; /**< samples at full scale, three or more of a channel one behind the other */
    uint64_t silent_frames;   /**< frames below -60 dB, half a second or more of them */
    uint64_t not_finite;      /**< samples that are no numbers, or infinite */
} vorlund_levels;

/** Reads what is left of a stream of PCM and measures it. `levels` is set only when that succeeds. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_measure_stream(vorlund_stream stream, vorlund_levels* levels);

/** Measures frames of floats, channels interleaved. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_measure_samples(const float* samples, uint32_t frames,
                                                           uint32_t channels, uint32_t rate,
                                                           vorlund_levels* levels);

#ifdef __cplusplus
}
#endif

#endif
