/* The records of the interface, which never change: the sizes and offsets that are kept. Pointers are the only thing in
 * them that differs between systems. */
#include "Suite.h"

struct field {
    const char* name;
    size_t offset;
    size_t offset32;
    size_t offset64;
};

#define C_FIELD(record, field, offset32, offset64)                                                           \
    { #record "." #field, offsetof(record, field), offset32, offset64 }
#define C_SIZE(record, size32, size64)                                                                       \
    { #record, sizeof(record), size32, size64 }

static const struct field fields[] = {
    C_SIZE(vorlund_error, 48, 72),
    C_FIELD(vorlund_error, size, 0, 0),
    C_FIELD(vorlund_error, code, 4, 4),
    C_FIELD(vorlund_error, exception_type, 8, 8),
    C_FIELD(vorlund_error, line, 12, 12),
    C_FIELD(vorlund_error, system_code, 16, 16),
    C_FIELD(vorlund_error, callback_code, 20, 20),
    C_FIELD(vorlund_error, type, 24, 24),
    C_FIELD(vorlund_error, method, 28, 32),
    C_FIELD(vorlund_error, file, 32, 40),
    C_FIELD(vorlund_error, reason, 36, 48),
    C_FIELD(vorlund_error, cause, 40, 56),
    C_FIELD(vorlund_error, reserved, 44, 64),
    C_SIZE(vorlund_audio_format, 16, 16),
    C_FIELD(vorlund_audio_format, sample_format, 4, 4),
    C_FIELD(vorlund_audio_format, channels, 8, 8),
    C_FIELD(vorlund_audio_format, rate, 12, 12),
    C_SIZE(vorlund_stream_callbacks, 24, 40),
    C_FIELD(vorlund_stream_callbacks, read, 8, 8),
    C_FIELD(vorlund_stream_callbacks, seek, 12, 16),
    C_FIELD(vorlund_stream_callbacks, length, 16, 24),
    C_FIELD(vorlund_stream_callbacks, release, 20, 32),
    C_SIZE(vorlund_sink_callbacks, 24, 40),
    C_FIELD(vorlund_sink_callbacks, write, 8, 8),
    C_FIELD(vorlund_sink_callbacks, seek, 12, 16),
    C_FIELD(vorlund_sink_callbacks, flush, 16, 24),
    C_FIELD(vorlund_sink_callbacks, release, 20, 32),
    C_SIZE(vorlund_decode_options, 24, 32),
    C_FIELD(vorlund_decode_options, forbidden_count, 4, 4),
    C_FIELD(vorlund_decode_options, forbidden, 8, 8),
    C_FIELD(vorlund_decode_options, preferred, 12, 16),
    C_FIELD(vorlund_decode_options, preferred_count, 16, 24),
    C_FIELD(vorlund_decode_options, reserved, 20, 28),
    C_SIZE(vorlund_report_entry, 48, 48),
    C_FIELD(vorlund_report_entry, outcome, 4, 4),
    C_FIELD(vorlund_report_entry, depth, 8, 8),
    C_FIELD(vorlund_report_entry, exception_type, 12, 12),
    C_FIELD(vorlund_report_entry, class_id, 16, 16),
    C_FIELD(vorlund_report_entry, bytes_read, 32, 32),
    C_FIELD(vorlund_report_entry, seconds, 40, 40),
    C_SIZE(vorlund_conversion, 40, 40),
    C_FIELD(vorlund_conversion, sample_format, 4, 4),
    C_FIELD(vorlund_conversion, channels, 8, 8),
    C_FIELD(vorlund_conversion, rate, 12, 12),
    C_FIELD(vorlund_conversion, quality, 16, 16),
    C_FIELD(vorlund_conversion, dithers, 20, 20),
    C_FIELD(vorlund_conversion, seed, 24, 24),
    C_FIELD(vorlund_conversion, clips_floats, 32, 32),
    C_FIELD(vorlund_conversion, reserved, 36, 36),
    C_SIZE(vorlund_levels, 104, 104),
    C_FIELD(vorlund_levels, frames, 8, 8),
    C_FIELD(vorlund_levels, peak, 16, 16),
    C_FIELD(vorlund_levels, peak_frame, 24, 24),
    C_FIELD(vorlund_levels, true_peak, 32, 32),
    C_FIELD(vorlund_levels, rms, 40, 40),
    C_FIELD(vorlund_levels, integrated, 48, 48),
    C_FIELD(vorlund_levels, range, 56, 56),
    C_FIELD(vorlund_levels, momentary_max, 64, 64),
    C_FIELD(vorlund_levels, short_term_max, 72, 72),
    C_FIELD(vorlund_levels, clipped_samples, 80, 80),
    C_FIELD(vorlund_levels, silent_frames, 88, 88),
    C_FIELD(vorlund_levels, not_finite, 96, 96),
    C_SIZE(vorlund_device_info, 24, 24),
    C_FIELD(vorlund_device_info, kind, 4, 4),
    C_FIELD(vorlund_device_info, is_default, 8, 8),
    C_FIELD(vorlund_device_info, channels, 12, 12),
    C_FIELD(vorlund_device_info, rate, 16, 16),
    C_SIZE(vorlund_decoder_callbacks, 28, 48),
    C_FIELD(vorlund_decoder_callbacks, connect, 8, 8),
    C_FIELD(vorlund_decoder_callbacks, read, 12, 16),
    C_FIELD(vorlund_decoder_callbacks, seek, 16, 24),
    C_FIELD(vorlund_decoder_callbacks, length, 20, 32),
    C_FIELD(vorlund_decoder_callbacks, disconnect, 24, 40),
    C_SIZE(vorlund_plugin_report, 32, 32),
    C_FIELD(vorlund_plugin_report, outcome, 4, 4),
    C_FIELD(vorlund_plugin_report, code, 8, 8),
    C_FIELD(vorlund_plugin_report, exception_type, 12, 12),
    C_FIELD(vorlund_plugin_report, library_version, 16, 16),
    C_FIELD(vorlund_plugin_report, items, 20, 20),
    C_FIELD(vorlund_plugin_report, loads, 24, 24),
    C_SIZE(vorlund_video_format, 56, 56),
    C_FIELD(vorlund_video_format, width, 4, 4),
    C_FIELD(vorlund_video_format, height, 8, 8),
    C_FIELD(vorlund_video_format, frame_rate, 12, 12),
    C_FIELD(vorlund_video_format, frame_size, 16, 16),
    C_FIELD(vorlund_video_format, bits_per_pixel, 20, 20),
    C_FIELD(vorlund_video_format, alpha_bits, 24, 24),
    C_FIELD(vorlund_video_format, alpha_shift, 28, 28),
    C_FIELD(vorlund_video_format, red_bits, 32, 32),
    C_FIELD(vorlund_video_format, red_shift, 36, 36),
    C_FIELD(vorlund_video_format, green_bits, 40, 40),
    C_FIELD(vorlund_video_format, green_shift, 44, 44),
    C_FIELD(vorlund_video_format, blue_bits, 48, 48),
    C_FIELD(vorlund_video_format, blue_shift, 52, 52),
};

static void records_stay_as_they_are(void) {
    unsigned int i;
    for (i = 0; i < sizeof(fields) / sizeof(fields[0]); ++i) {
        const size_t kept = sizeof(void*) == 4 ? fields[i].offset32 : fields[i].offset64;
        if (fields[i].offset != kept) c_fail(__FILE__, __LINE__, fields[i].name);
    }
}

static const struct c_case cases[] = {{"RecordsStayAsTheyAre", records_stay_as_they_are}};

C_SUITE(CLayouts, cases);
