/* What Python calls, beside functions of vorlund_c.h. Plain declarations without a preprocessor: cffi reads
 * this file, and engine.h includes it. Results are codes of vorlund_c.h. A report that is given is freed by
 * the caller, also after a failure. Arrays that are given are freed by engine_free. */

/* Where bytes come from: a path, or memory, which must stay until the stream is freed, or an object of
 * Python. */
typedef struct engine_source {
    const char* path;
    const void* bytes;
    uint64_t count;
    void* object;
} engine_source;

/* Where bytes go: a path, or an object of Python. */
typedef struct engine_target {
    const char* path;
    void* object;
} engine_target;

/* A sound that is open. */
typedef struct engine_sound {
    vorlund_stream stream;
    uint32_t sample_format;
    uint32_t channels;
    uint32_t native_channels; /* before they are mixed */
    uint32_t rate;
    int32_t has_frames; /* 0 where the number of frames is not known */
    uint64_t frames;
} engine_sound;

/* What is wanted of a sound. */
typedef struct engine_wanted {
    uint64_t start;         /* the first frame, of the sound itself */
    uint64_t frames;        /* at most; of the sound itself */
    uint32_t sample_format; /* of vorlund_c.h, or ENGINE_DOUBLE */
    uint32_t channels;      /* 0 for those of the sound */
    uint32_t rate;          /* 0 for that of the sound */
    uint32_t quality;
} engine_wanted;

/* A block of samples, frame by frame. */
typedef struct engine_array {
    void* samples;
    uint64_t frames;
    uint32_t channels;
    uint32_t rate;
    uint32_t sample_format;
} engine_array;

typedef struct engine_pair {
    const char* name;
    const char* text;
} engine_pair;

/* A sound file to be written. */
typedef struct engine_plan {
    const char* kind;
    uint32_t sample_format; /* as vorlund_writer_open_file takes it */
    uint32_t channels;
    uint32_t rate;
    uint32_t option_count;
    uint32_t tag_count;
    const engine_pair* options;
    const engine_pair* tags;
} engine_plan;

/* A file under way. The sink is null where the writer has opened the file. */
typedef struct engine_writer {
    vorlund_writer writer;
    vorlund_sink sink;
} engine_writer;

/* Besides the sample formats of vorlund_c.h: double precision. And the most channels. */
enum { ENGINE_DOUBLE = 64, ENGINE_CHANNELS = 1024 };

/* Opens a sound for reading, at another rate when `wanted` has one, and at its start. The channels that are
 * told are those that are wanted, into which engine_fill mixes. */
int32_t engine_open(const engine_source* source, const engine_wanted* wanted, engine_sound* sound,
                    vorlund_report* report);
/* Reads frames of `channels`, mixed out of the `native_channels` that the stream has. */
int32_t engine_fill(vorlund_stream stream, uint32_t sample_format, uint32_t native_channels,
                    uint32_t channels, void* samples, uint64_t frames, uint64_t* count);
/* Goes to a frame, by reading where the stream has no positions. */
int32_t engine_go_to(vorlund_stream stream, uint64_t frame);

/* A whole sound, or a part of one. */
int32_t engine_read(const engine_source* source, const engine_wanted* wanted, engine_array* array,
                    vorlund_report* report);
/* The same of a file, without a record of it. */
int32_t engine_read_file(const char* path, const engine_wanted* wanted, engine_array* array,
                         vorlund_report* report);
/* The least and the greatest sample of each of `count` parts and each channel, as floats, after each other.
 */
int32_t engine_peaks(const engine_source* source, uint32_t channels, uint32_t count, engine_array* array,
                     vorlund_report* report);
/* How loud a whole sound is. */
int32_t engine_measure(const engine_source* source, vorlund_levels* levels, vorlund_report* report);
/* Floats at another rate. */
int32_t engine_resample(const float* samples, uint64_t frames, uint32_t channels, uint32_t from_rate,
                        uint32_t to_rate, uint32_t quality, engine_array* array);
void engine_free(void* samples);

int32_t engine_writer_open(const engine_target* target, const engine_plan* plan, engine_writer* writer);
/* `sample_format` may be ENGINE_DOUBLE. */
int32_t engine_writer_write(const engine_writer* writer, uint32_t sample_format, uint32_t channels,
                            const void* samples, uint64_t frames);
/* Completes the file and frees both handles, also when that fails. */
int32_t engine_writer_finish(engine_writer* writer);
/* A whole file. */
int32_t engine_write(const engine_target* target, const engine_plan* plan, uint32_t sample_format,
                     const void* samples, uint64_t frames);
/* One file from another. What is 0 in the plan is taken from the source, which is VORLUND_SAMPLE_KEEP for
 * samples. */
int32_t engine_convert(const engine_source* source, const engine_target* target, const engine_plan* plan,
                       uint32_t quality, uint64_t* frames, vorlund_report* report);

/* A stream over a copy of samples, to be played. */
int32_t engine_copy_stream(const void* samples, uint64_t count, const vorlund_audio_format* format,
                           vorlund_stream* stream);
