// A whole plug-in in C: it brings a decoder of VSA files, which plugins/sample/README.md describes. It uses no
// function of the C library, so that compilers without one can make it.
#include <vorlund/PluginTable.h>

VORLUND_PLUGIN_INFO("sample-c", "1.0", "MIT")

enum { HEADER_SIZE = 16, MAX_CHANNELS = 8 };

// A decoder at work. The library makes and frees the block.
typedef struct decoder_state {
    const vorlund_plugin_input* input;
    // Of the samples, and the next one to read, in bytes.
    int64_t length;
    int64_t position;
} decoder_state;

static uint32_t load32(const uint8_t* bytes) {
    return bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 | (uint32_t)bytes[3] << 24;
}

static void note_number(const vorlund_plugin_input* input, const char* name, int64_t value) {
    input->note_value(input, name, &value);
}

// Reads the header, however little the stream delivers at a time.
static int32_t read_header(const vorlund_plugin_input* input, uint8_t* header) {
    uint32_t done = 0;
    while (done < HEADER_SIZE) {
        uint32_t count = 0;
        int32_t result = input->read(input, header + done, HEADER_SIZE - done, &count);
        if (result != VORLUND_PLUGIN_OK) return result;
        if (count == 0) return VORLUND_PLUGIN_OTHER_DATA;
        done += count;
    }
    if (header[0] != 'V' || header[1] != 'S' || header[2] != 'A' || header[3] != '1')
        return VORLUND_PLUGIN_OTHER_DATA;
    return VORLUND_PLUGIN_OK;
}

static int32_t VORLUND_PLUGIN_CALL recognise_vsa(const vorlund_plugin_decoder* decoder,
                                                 const vorlund_plugin_input* input) {
    uint8_t header[HEADER_SIZE];
    (void)decoder;
    if (!input->has_positions) return VORLUND_PLUGIN_OTHER_DATA;
    return read_header(input, header);
}

static int32_t VORLUND_PLUGIN_CALL open_vsa(const vorlund_plugin_decoder* decoder,
                                            const vorlund_plugin_input* input, vorlund_plugin_opened* opened) {
    decoder_state* state = (decoder_state*)opened->instance;
    vorlund_plugin_audio* audio = &opened->format.audio;
    uint8_t header[HEADER_SIZE];
    int64_t length = 0;
    int32_t result = read_header(input, header);
    if (result != VORLUND_PLUGIN_OK) return result;
    result = input->length(input, &length);
    if (result != VORLUND_PLUGIN_OK) return result;

    input->note_container(input, "VSA");
    if (header[4] < 1 || header[4] > MAX_CHANNELS || (header[5] != 8 && header[5] != 16) ||
        header[6] != 0 || header[7] != 0 || load32(header + 8) == 0) {
        // Who asks why finds these beside the reason.
        note_number(input, "channels", header[4]);
        note_number(input, "bits", header[5]);
        input->explain(input, "Invalid VSA header");
        return VORLUND_PLUGIN_DAMAGED;
    }
    audio->id = decoder->result_format;
    audio->size = sizeof *audio;
    audio->sample_format = header[5] == 8 ? VORLUND_PLUGIN_SAMPLES_8 : VORLUND_PLUGIN_SAMPLES_16;
    audio->channels = header[4];
    audio->samples_per_sec = load32(header + 8);

    // What the header declares, as far as the file has it.
    state->input = input;
    state->length = (int64_t)load32(header + 12) * header[4] * (header[5] / 8);
    if (state->length > length - HEADER_SIZE) state->length = length - HEADER_SIZE;
    opened->length = state->length;
    return VORLUND_PLUGIN_OK;
}

static int32_t VORLUND_PLUGIN_CALL read_vsa(void* instance, void* buffer, uint32_t size, uint32_t* count) {
    decoder_state* state = (decoder_state*)instance;
    int64_t rest = state->length - state->position;
    int32_t result =
        state->input->read(state->input, buffer, rest < size ? (uint32_t)rest : size, count);
    if (result == VORLUND_PLUGIN_OK) state->position += *count;
    return result;
}

static int32_t VORLUND_PLUGIN_CALL seek_vsa(void* instance, const int64_t* position) {
    decoder_state* state = (decoder_state*)instance;
    int64_t place = *position + HEADER_SIZE;
    state->position = *position;
    return state->input->seek(state->input, &place);
}

static void VORLUND_PLUGIN_CALL close_vsa(void* instance) {
    (void)instance;
}

static const vorlund_plugin_decoder vsa_decoder = {
    sizeof(vorlund_plugin_decoder),
    sizeof(decoder_state),
    {{0x6F1B93D2u, 0x47C8405Eu, 0xA9D3710Bu, 0x25E6C84Fu}},
    "sample_c::CDecoder",
    {{0, 0, 0, 0}},
    VORLUND_PLUGIN_AUDIO_ID,
    recognise_vsa,
    open_vsa,
    read_vsa,
    seek_vsa,
    close_vsa,
};

static const vorlund_plugin_decoder* const decoders[] = {&vsa_decoder};

// Exported under this name.
extern const vorlund_plugin_table vorlund_plugin_v1;
const vorlund_plugin_table vorlund_plugin_v1 = {
    sizeof(vorlund_plugin_table), VORLUND_PLUGIN_TABLE_VERSION, 1, 0, decoders, 0,
};

// The two entries; docs/plugins-in-c.md tells how they get their names.
_Bool VrlInitPlugin(void);
_Bool VrlInitPlugin(void) {
    return 1;
}

void VrlClosePlugin(void);
void VrlClosePlugin(void) {}
