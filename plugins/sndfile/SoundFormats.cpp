#include "SoundFormats.h"

using namespace vorlund;

TSoundFormat GetSoundFormat(const SF_INFO& info) {
    switch (info.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
    // Expanded to 16 bits by definition, sample by sample.
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
    case SF_FORMAT_ALAC_16:
        return {SAMPLE_FORMAT_16BIT, TSeekRule::Direct};
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_ALAC_20:
    case SF_FORMAT_ALAC_24:
    case SF_FORMAT_ALAC_32:
        return {SAMPLE_FORMAT_32BIT, TSeekRule::Direct};
    // Blocks that stand alone.
    case SF_FORMAT_IMA_ADPCM:
    case SF_FORMAT_MS_ADPCM:
        return {SAMPLE_FORMAT_16BIT, TSeekRule::Direct};
    // Decoders of 16 bits with a memory.
    case SF_FORMAT_GSM610:
    case SF_FORMAT_VOX_ADPCM:
    case SF_FORMAT_NMS_ADPCM_16:
    case SF_FORMAT_NMS_ADPCM_24:
    case SF_FORMAT_NMS_ADPCM_32:
    case SF_FORMAT_G721_32:
    case SF_FORMAT_G723_24:
    case SF_FORMAT_G723_40:
    case SF_FORMAT_DWVW_12:
    case SF_FORMAT_DWVW_16:
    case SF_FORMAT_DPCM_8:
    case SF_FORMAT_DPCM_16:
        return {SAMPLE_FORMAT_16BIT, TSeekRule::DecodeOn};
    case SF_FORMAT_DWVW_24:
    case SF_FORMAT_DWVW_N:
        return {SAMPLE_FORMAT_32BIT, TSeekRule::DecodeOn};
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
        return {SAMPLE_FORMAT_FLOAT, TSeekRule::Direct};
    case SF_FORMAT_VORBIS:
        return {SAMPLE_FORMAT_FLOAT, TSeekRule::Pages};
    default:
        // MPEG and Opus, whose decoders remember more than the last block, and what a later libsndfile
        // brings.
        return {SAMPLE_FORMAT_FLOAT, TSeekRule::DecodeOn};
    }
}

std::int64_t ReadFrames(SNDFILE* file, std::uint32_t format, void* buffer, std::int64_t frames) {
    switch (format) {
    case SAMPLE_FORMAT_16BIT:
        return sf_readf_short(file, static_cast<short*>(buffer), frames);
    case SAMPLE_FORMAT_32BIT:
        return sf_readf_int(file, static_cast<int*>(buffer), frames);
    default:
        return sf_readf_float(file, static_cast<float*>(buffer), frames);
    }
}
