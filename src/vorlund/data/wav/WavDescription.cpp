#include "vorlund/data/wav/WavDescription.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr TFailure kUnknownSamples{VRL_L("vorlund::TWavWriterFormat::TWavWriterFormat"),
                                   VRL_L("src/vorlund/data/wav/WavDescription"), 1,
                                   VRL_L("The sample format is unknown")};

// Format tags of RFC 2361, and of the extended form with a GUID.
constexpr std::uint16_t kIntegerPcm = 1;
constexpr std::uint16_t kIeeeFloat = 3;
constexpr std::uint16_t kExtensible = 0xFFFE;
/// The GUIDs of PCM and float are their tags with this behind.
constexpr std::string_view kGuidRest{"\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14};
constexpr std::size_t kSubformatAt = 24;
constexpr std::uint16_t kExtensionSize = 22;

/// The speakers of one to eight channels, in the order of the bits: front left, right and center, low
/// frequencies, back left and right, center left and right, back center, side left and right.
constexpr std::uint32_t kUsualMasks[] = {0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};

bool IsExtensible(const TWavWriterFormat& format) {
    if (format.description == WAV_DESCRIPTION_PLAIN) return false;
    return format.channels > 2 || format.channelMask || format.sampleFormat == WAV_SAMPLE_24BIT ||
           format.sampleFormat == WAV_SAMPLE_32BIT;
}

} // namespace

TWavWriterFormat::TWavWriterFormat(const TDataFormat_AudioPcm& format)
    : channels(format.channels), samplesPerSec(format.samplesPerSec) {
    switch (format.sampleFormat) {
    case SAMPLE_FORMAT_8BIT:
        sampleFormat = WAV_SAMPLE_8BIT;
        break;
    case SAMPLE_FORMAT_16BIT:
        sampleFormat = WAV_SAMPLE_16BIT;
        break;
    case SAMPLE_FORMAT_32BIT:
        sampleFormat = WAV_SAMPLE_32BIT;
        break;
    case SAMPLE_FORMAT_FLOAT:
        sampleFormat = WAV_SAMPLE_FLOAT;
        break;
    default:
        Raise<CInvalidParameterException>(kUnknownSamples);
    }
}

std::uint32_t TWavWriterFormat::GetBlockSize() const {
    return channels * wav::GetSampleSize(sampleFormat);
}

namespace wav {

std::uint32_t GetSampleSize(TWavSampleFormat format) {
    switch (format) {
    case WAV_SAMPLE_8BIT:
        return 1;
    case WAV_SAMPLE_16BIT:
        return 2;
    case WAV_SAMPLE_24BIT:
        return 3;
    case WAV_SAMPLE_32BIT:
    case WAV_SAMPLE_FLOAT:
        return 4;
    default:
        return 0;
    }
}

riff::TBytes MakeDescription(const TWavWriterFormat& format) {
    const bool isExtensible = IsExtensible(format);
    const std::uint16_t tag = format.sampleFormat == WAV_SAMPLE_FLOAT ? kIeeeFloat : kIntegerPcm;
    const std::uint32_t bits = GetSampleSize(format.sampleFormat) * 8;
    riff::CFields fields;
    fields.Number(isExtensible ? kExtensible : tag, 2)
        .Number(format.channels, 2)
        .Number(format.samplesPerSec, 4)
        .Number(riff::Limit(std::uint64_t{format.samplesPerSec} * format.GetBlockSize()), 4)
        .Number(format.GetBlockSize(), 2)
        .Number(bits, 2);
    if (isExtensible) {
        const std::uint32_t usual =
            format.channels < std::size(kUsualMasks) ? kUsualMasks[format.channels] : 0;
        fields.Number(kExtensionSize, 2).Number(bits, 2).Number(format.channelMask.value_or(usual), 4);
        fields.Number(tag, 2).Text(kGuidRest);
    } else if (tag != kIntegerPcm) {
        // No bytes of extension follow.
        fields.Number(0, 2);
    }
    return riff::CFields().Chunk("fmt ", fields.Get()).Get();
}

TDescription ReadDescription(const riff::TBytes& body) {
    std::uint16_t tag = LoadLittleEndian16(body.data());
    if (tag == kExtensible && body.size() >= kSubformatAt + 2)
        tag = LoadLittleEndian16(body.data() + kSubformatAt);
    return {LoadLittleEndian16(body.data() + 12), tag == kIntegerPcm || tag == kIeeeFloat};
}

} // namespace wav
} // namespace vorlund
