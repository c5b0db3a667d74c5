#include "vorlund/data/filters/WavDecoder.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/data/base/FilterConnection.h"

#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>

#include <exception>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/WavDecoder");
constexpr const wchar* kConnect = VRL_L("vorlund::CWavDecoder::Connect");

constexpr TFailure kNoFmtChunk{kConnect, kFile, 129, VRL_L("Cannot find fmt chunk")};
constexpr TFailure kShortFmtChunk{kConnect, kFile, 134, VRL_L("Invalid fmt chunk size")};
constexpr TFailure kUnsupportedFormat{kConnect, kFile, 138, VRL_L("Unsupported wave format")};
// Kept for callers, who compare texts: the misspelling here and the trailing blank below.
constexpr TFailure kUnsupportedBits{kConnect, kFile, 142, VRL_L("Usupported bits per sample")};
constexpr TFailure kNoDataChunk{kConnect, kFile, 151, VRL_L("Cannot find data chunk ")};
constexpr TFailure kNoChunkDecoder{VRL_L("vorlund::CWavDecoder::CreateChunks"), kFile, 61,
                                   VRL_L("Cannot create chunk decoder")};

// The head of the "fmt " chunk; what longer chunks add concerns other format tags.
constexpr std::size_t kFormatSize = 16;
constexpr std::size_t kTagAt = 0;
constexpr std::size_t kChannelsAt = 2;
constexpr std::size_t kSamplesPerSecAt = 4;
constexpr std::size_t kBitsPerSampleAt = 14;
constexpr std::uint16_t kIntegerPcm = 1;

} // namespace

CWavDecoder::~CWavDecoder() noexcept(false) {
    if (!chunks_) return;
    // A second exception in flight would end the process.
    if (std::uncaught_exceptions() > 0)
        DisconnectQuietly(*chunks_);
    else
        chunks_->Disconnect();
}

void CWavDecoder::Connect(IInputStream* stream) {
    IWavChunkDecoder& chunks = Chunks();
    try {
        chunks.Connect(stream);
        SelectChunk(VRL_L("fmt "), kNoFmtChunk);
        ReadFormat();
        SelectChunk(VRL_L("data"), kNoDataChunk);
    } catch (...) {
        // Usually a `CIOException` of the stream; after any failure, nothing stays connected.
        chunks.Disconnect();
        throw;
    }
}

void CWavDecoder::CreateChunks() {
    chunks_ = CreateOrRaise<IWavChunkDecoder>(classid::CWavChunkDecoder, kNoChunkDecoder);
}

void CWavDecoder::ReadFormat() {
    std::uint8_t record[kFormatSize];
    if (!ReadWhole(*chunks_, record, sizeof record)) Refuse(kShortFmtChunk);
    if (LoadLittleEndian16(record + kTagAt) != kIntegerPcm) Refuse(kUnsupportedFormat);
    const std::uint16_t bitsPerSample = LoadLittleEndian16(record + kBitsPerSampleAt);
    if (bitsPerSample != 8 && bitsPerSample != 16) Refuse(kUnsupportedBits);

    // Channels and rate are not checked: even 0 is passed on.
    format_.channels = LoadLittleEndian16(record + kChannelsAt);
    format_.samplesPerSec = LoadLittleEndian32(record + kSamplesPerSecAt);
    format_.sampleFormat = bitsPerSample == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT;
}

void CWavDecoder::SelectChunk(const wchar* id, const TFailure& notFound) {
    try {
        chunks_->SelectChunk(id);
    } catch (const CObjectNotFoundException&) {
        Refuse(notFound);
    }
}

void CWavDecoder::Refuse(const TFailure& failure) {
    chunks_->Disconnect();
    Raise<CDataFormatException>(failure);
}

} // namespace vorlund
