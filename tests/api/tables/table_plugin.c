// A plug-in with a table. Tests write the number of a case into copies of its file: what is wrong with the table.
// What its decoder does, the first byte of its input says, behind a "T".
#include <vorlund/PluginTable.h>

VORLUND_PLUGIN_INFO("table-plugin", "0.9", "MIT")

// What tests count.
static int32_t open_instances = 0;

// The number is replaced in the file, so the compiler must not know it.
static volatile const char test_case[] = "TABLE CASE 00";

typedef struct instance {
    const vorlund_plugin_input* input;
    int64_t position;
    char mode;
    char rest[100];
} instance;

// For an input that is used when it must not be.
static const vorlund_plugin_input* kept_input;
// For a decoder whose instances the library does not make.
static instance own_instance;

static void set_audio(vorlund_plugin_format* format) {
    static const vorlund_plugin_audio audio = {VORLUND_PLUGIN_AUDIO_ID, 32, VORLUND_PLUGIN_SAMPLES_8, 1, 8000};
    format->audio = audio;
}

static int32_t VORLUND_PLUGIN_CALL open_test(const vorlund_plugin_decoder* decoder,
                                             const vorlund_plugin_input* input, vorlund_plugin_opened* opened) {
    instance* self = (instance*)opened->instance;
    char head[2] = {0, 0};
    uint32_t count = 0;
    int64_t value = -5;
    int32_t result = input->read(input, head, 2, &count);
    uint32_t i = 0;
    if (decoder->instance_size == 0) opened->instance = self = &own_instance;
    for (i = 0; i < decoder->instance_size; ++i)
        if (((const uint8_t*)opened->instance)[i] != 0) return VORLUND_PLUGIN_FAILED;
    if (result != VORLUND_PLUGIN_OK) return result;
    if (count < 2 || head[0] != 'T') return VORLUND_PLUGIN_OTHER_DATA;
    self->input = input;
    self->mode = head[1];
    set_audio(&opened->format);
    opened->length = 1000;
    input->note_container(input, "Table test");
    switch (head[1]) {
    case 'd': // damaged, with all that can be told
        input->note_value(input, "depth", &value);
        input->note_remark(input, "a remark");
        input->explain(input, "Not \xE2\x82\xAC" "5\x1B[2J");
        return VORLUND_PLUGIN_DAMAGED;
    case 'u':
        return VORLUND_PLUGIN_UNREADABLE;
    case 'm':
        return VORLUND_PLUGIN_NO_MEMORY;
    case 'x': // no code
        return 77;
    case 'c':
        opened->format.audio.channels = 0;
        break;
    case 'h':
        opened->format.audio.size = 4000000000u;
        break;
    case 'i':
        opened->format.audio.id.words[0] = 1;
        break;
    case 'l': // the length is not known
        opened->length = -7;
        break;
    case 'F': // the format follows in the input
        return input->read(input, &opened->format, sizeof opened->format, &count);
    case 't': // all that an input with positions and a format of its own answers
        value = 1;
        if (input->seek(input, &value) != VORLUND_PLUGIN_OK || input->tell(input, &value) != VORLUND_PLUGIN_OK ||
            value != 1 || input->length(input, &value) != VORLUND_PLUGIN_OK || value != 2 ||
            input->format(input, &opened->format) != VORLUND_PLUGIN_OK)
            return VORLUND_PLUGIN_FAILED;
        break;
    case 'w': // an input that has neither
        value = 1;
        if (input->has_positions || input->seek(input, &value) != VORLUND_PLUGIN_NOT_SUPPORTED ||
            input->tell(input, &value) != VORLUND_PLUGIN_NOT_SUPPORTED ||
            input->format(input, &opened->format) != VORLUND_PLUGIN_NOT_SUPPORTED)
            return VORLUND_PLUGIN_FAILED;
        break;
    case 'k': // its input is kept for another
        kept_input = input;
        break;
    case 'K':
        if (kept_input->read(kept_input, head, 1, &count) != VORLUND_PLUGIN_FAILED) return VORLUND_PLUGIN_FAILED;
        break;
    case 'n': // null pointers and rubbish for the input
        if (input->read(input, 0, 5, &count) == 0 || input->read(input, head, 1, 0) == 0 ||
            input->seek(input, 0) == 0 || input->seek(input, &value) == 0 || input->tell(input, 0) == 0 ||
            input->length(input, 0) == 0 || input->format(input, 0) == 0 || input->read(0, head, 1, &count) == 0)
            return VORLUND_PLUGIN_FAILED;
        input->explain(input, 0);
        input->note_container(input, 0);
        input->note_value(input, 0, &value);
        input->note_value(input, "name", 0);
        input->note_remark(input, 0);
        break;
    default:
        break;
    }
    ++open_instances;
    return VORLUND_PLUGIN_OK;
}

static int32_t VORLUND_PLUGIN_CALL read_test(void* instance_of, void* buffer, uint32_t size, uint32_t* count) {
    instance* self = (instance*)instance_of;
    uint32_t i = 0;
    switch (self->mode) {
    case 'r': // more than there can be
        *count = 0xFFFFFFFFu;
        break;
    case 'f':
        self->input->explain(self->input, "Frame 3 is broken");
        return VORLUND_PLUGIN_DAMAGED;
    case 'o':
        return VORLUND_PLUGIN_NO_MEMORY;
    case 's': // what the input does decides
    case 'v': // and in seeks too
        return self->input->read(self->input, buffer, size, count);
    default:
        if (self->position + size > 1000) size = (uint32_t)(1000 - self->position);
        *count = size;
        break;
    }
    for (i = 0; i < size; ++i) ((uint8_t*)buffer)[i] = (uint8_t)(self->position + i);
    self->position += size;
    return VORLUND_PLUGIN_OK;
}

static int32_t VORLUND_PLUGIN_CALL recognise_test(const vorlund_plugin_decoder* decoder,
                                                  const vorlund_plugin_input* input) {
    char head = 0;
    uint32_t count = 0;
    (void)decoder;
    input->read(input, &head, 1, &count);
    return count == 1 && head == 'T' ? VORLUND_PLUGIN_OK : VORLUND_PLUGIN_OTHER_DATA;
}

static int32_t VORLUND_PLUGIN_CALL seek_test(void* instance_of, const int64_t* position) {
    const instance* self = (const instance*)instance_of;
    if (self->mode == 'e') {
        self->input->explain(self->input, "No way there");
        return VORLUND_PLUGIN_DAMAGED;
    }
    if (self->mode == 'v') return self->input->seek(self->input, position);
    ((instance*)instance_of)->position = *position;
    return VORLUND_PLUGIN_OK;
}

static void VORLUND_PLUGIN_CALL close_test(void* instance_of) {
    (void)instance_of;
    --open_instances;
}

// A device that moves one block in the call that starts it.
static const vorlund_plugin_client* device_client;
static int device_starts, device_dies, device_is_input, device_has_moved, device_is_loud;

static int32_t VORLUND_PLUGIN_CALL open_device(const vorlund_plugin_device* device,
                                               const vorlund_plugin_client* client,
                                               vorlund_plugin_port_format* format, void** instance_of) {
    (void)instance_of;
    if (device_is_loud) return VORLUND_PLUGIN_FAILED;
    if (format->samples_per_sec == 1234) {
        client->explain(client, "No such rate");
        return VORLUND_PLUGIN_NOT_SUPPORTED;
    }
    if (format->samples_per_sec == 1235) format->channels = 0;
    if (format->samples_per_sec == 1236) format->period_frames = format->periods = 0xFFFFFFFFu;
    if (format->samples_per_sec == 1237) format->sample_format = 4;
    if (format->samples_per_sec == 1238) format->channels = 256;
    if (format->samples_per_sec == 1239) format->samples_per_sec = 0;
    if (format->samples_per_sec == 1240) return VORLUND_PLUGIN_NO_MEMORY;
    if (format->samples_per_sec == 1241) return VORLUND_PLUGIN_FAILED;
    device_starts = format->samples_per_sec != 1242;
    device_dies = format->samples_per_sec == 1243;
    device_is_input = device->kind == VORLUND_PLUGIN_AUDIO_INPUT;
    device_client = client;
    device_has_moved = 0;
    ++open_instances;
    return VORLUND_PLUGIN_OK;
}
static int32_t VORLUND_PLUGIN_CALL start_device(void* instance_of) {
    uint8_t block[4096];
    (void)instance_of;
    device_has_moved = 1;
    device_client->process(device_client, block, 16);
    device_client->process(device_client, 0, 16);
    device_client->process(0, block, 16);
    device_client->process(device_client, block, 0);
    device_client->note_xruns(0, 1);
    device_client->note_xruns(device_client, 0);
    device_client->note_xruns(device_client, 3);
    device_client->note_lost(0);
    device_client->explain(0, "nobody's");
    if (device_dies) device_client->note_lost(device_client);
    return device_starts ? VORLUND_PLUGIN_OK : VORLUND_PLUGIN_FAILED;
}
static void VORLUND_PLUGIN_CALL stop_device(void* instance_of) {
    (void)instance_of;
    device_client->explain(device_client, "too late");
}
static void VORLUND_PLUGIN_CALL close_device(void* instance_of) {
    uint8_t block[256];
    uint32_t i = 0;
    (void)instance_of;
    // When it is stopped, an output gets silence, and from an input nothing is taken.
    for (i = 0; i < sizeof block; ++i) block[i] = 0xEE;
    device_client->process(device_client, block, 4);
    device_is_loud = device_has_moved && block[0] != (device_is_input ? 0xEE : 0);
    --open_instances;
}
static uint32_t VORLUND_PLUGIN_CALL delay_of_device(void* instance_of) {
    (void)instance_of;
    return 0xFFFFFFFFu;
}

static vorlund_plugin_decoder decoder = {sizeof(vorlund_plugin_decoder),
                                         sizeof(instance),
                                         {{0x7AB1E001u, 1, 2, 3}},
                                         "table::CDecoder",
                                         {{0, 0, 0, 0}},
                                         VORLUND_PLUGIN_AUDIO_ID,
                                         0,
                                         open_test,
                                         read_test,
                                         seek_test,
                                         close_test};
// The same without positions, for inputs of a format of its own.
static vorlund_plugin_decoder forward = {sizeof(vorlund_plugin_decoder),
                                         sizeof(instance),
                                         {{0x7AB1E002u, 1, 2, 3}},
                                         "table::CForward",
                                         {{0x7AB1EF00u, 1, 2, 3}},
                                         VORLUND_PLUGIN_AUDIO_ID,
                                         0,
                                         open_test,
                                         read_test,
                                         0,
                                         close_test};
static vorlund_plugin_device output = {sizeof(vorlund_plugin_device),
                                       VORLUND_PLUGIN_AUDIO_OUTPUT,
                                       {{0x7AB1E003u, 1, 2, 3}},
                                       "table::COutput",
                                       0,
                                       0,
                                       open_device,
                                       start_device,
                                       stop_device,
                                       close_device,
                                       delay_of_device};
static vorlund_plugin_device audio_input = {sizeof(vorlund_plugin_device),
                                            VORLUND_PLUGIN_AUDIO_INPUT,
                                            {{0x7AB1E004u, 1, 2, 3}},
                                            "table::CInput",
                                            0,
                                            0,
                                            open_device,
                                            start_device,
                                            stop_device,
                                            close_device,
                                            0};
static const vorlund_plugin_decoder* decoders[] = {&decoder, &forward};
static const vorlund_plugin_device* devices[] = {&output, &audio_input};

extern vorlund_plugin_table vorlund_plugin_v1;
vorlund_plugin_table vorlund_plugin_v1 = {
    sizeof(vorlund_plugin_table), VORLUND_PLUGIN_TABLE_VERSION, 2, 2, decoders, devices};

static char long_name[300];
static const vorlund_plugin_id image_format = VORLUND_PLUGIN_IMAGE_ID;
static const vorlund_plugin_id video_format = VORLUND_PLUGIN_VIDEO_ID;

static void damage(int number) {
    uint32_t i = 0;
    for (i = 0; i < sizeof long_name; ++i) long_name[i] = 'x';
    switch (number) {
    case 1: vorlund_plugin_v1.size = 4; break;
    case 2: vorlund_plugin_v1.size = 0xFFFFFFFFu; break;
    case 3: vorlund_plugin_v1.version = 9; break;
    case 4: vorlund_plugin_v1.decoder_count = 65; break;
    case 5: vorlund_plugin_v1.device_count = 0xFFFFFFFFu; break;
    case 6: vorlund_plugin_v1.decoders = 0; break;
    case 7: vorlund_plugin_v1.devices = 0; break;
    case 8: decoders[1] = 0; break;
    case 9: decoder.size = 12; break;
    case 10: decoder.size = 65537; break;
    case 11: decoder.open = 0; break;
    case 12: decoder.read = 0; break;
    case 13: decoder.close = 0; break;
    case 14: decoder.class_name = 0; break;
    case 15: decoder.class_name = ""; break;
    case 16: decoder.class_name = long_name; break;
    case 17: decoder.class_id.words[0] = decoder.class_id.words[1] = 0;
        decoder.class_id.words[2] = decoder.class_id.words[3] = 0;
        break;
    case 18: forward.class_id = decoder.class_id; break;
    case 19: decoder.result_format = decoder.source_format; break;
    case 20: decoder.instance_size = 0x7FFFFFFFu; break;
    case 21: output.kind = 3; break;
    case 22: output.open = 0; break;
    case 23: output.start = 0; break;
    case 24: output.stop = 0; break;
    case 25: output.close = 0; break;
    case 26: audio_input.size = 0; break;
    case 27: audio_input.class_id = decoder.class_id; break;
    // Good ones.
    case 28: decoder.result_format = image_format; break;
    case 29: decoder.result_format = video_format; break;
    case 30: decoder.result_format.words[0] = decoder.result_format.words[1] = 9;
        decoder.result_format.words[2] = decoder.result_format.words[3] = 9;
        break;
    case 31: decoder.recognise = recognise_test; break;
    case 32: decoder.instance_size = 0; break;
    case 33: vorlund_plugin_v1.decoder_count = vorlund_plugin_v1.device_count = 0;
        vorlund_plugin_v1.decoders = 0;
        vorlund_plugin_v1.devices = 0;
        break;
    case 34: vorlund_plugin_v1.decoder_count = vorlund_plugin_v1.device_count = 0; break;
    // Bad ones again.
    case 35: devices[1] = 0; break;
    case 36: audio_input.class_id.words[0] = audio_input.class_id.words[1] = 0;
        audio_input.class_id.words[2] = audio_input.class_id.words[3] = 0;
        break;
    default: break;
    }
}

_Bool VrlInitPlugin(void);
_Bool VrlInitPlugin(void) {
    damage((test_case[11] - '0') * 10 + (test_case[12] - '0'));
    return 1;
}

void VrlClosePlugin(void);
void VrlClosePlugin(void) {}
