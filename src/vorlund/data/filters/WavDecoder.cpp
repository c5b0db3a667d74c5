#include "vorlund/data/filters/WavDecoder.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/data/base/FilterConnection.h"
#include "vorlund/data/base/QuietCall.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>

#include <exception>
#include <optional>

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

/// One `Connect`. What returns false, or nothing, has refused the file.
struct TConnecting {
    IWavChunkDecoder& chunks;
    const CRefusal& refusal;

    /// Disconnects and refuses, because of that value.
    template <class TValue> void Refuse(const TFailure& failure, const wchar* name, TValue value) const {
        NoteValue(name, value);
        chunks.Disconnect();
        refusal.Raise<CDataFormatException>(failure);
    }

    /// Connects the chunk decoder, whose refusal is this decoder's.
    bool ConnectChunks(IInputStream* stream) const {
        {
            const CPassedRefusal passed(refusal, chunks);
            chunks.Connect(stream);
            if (!passed.IsRefused()) return true;
        }
        chunks.Disconnect();
        return false;
    }

    /// Selects a chunk that the file must have.
    bool SelectChunk(const wchar* id, const TFailure& notFound) const {
        bool isThere = false;
        try {
            const refusals::CQuietCall call(chunks);
            chunks.SelectChunk(id);
            isThere = !call.GetRefusal();
        } catch (const CObjectNotFoundException&) {
            // From a class that replaces the library's.
        }
        if (!isThere) Refuse(notFound, VRL_L("chunk"), id);
        return isThere;
    }

    std::optional<TDataFormat_AudioPcm> ReadFormat() const;
};

/// Checks the "fmt " chunk, which is selected, and takes the format from it.
std::optional<TDataFormat_AudioPcm> TConnecting::ReadFormat() const {
    std::uint8_t record[kFormatSize];
    if (!ReadWhole(chunks, record, sizeof record)) {
        Refuse(kShortFmtChunk, VRL_L("bytes"), chunks.GetLength());
        return {};
    }
    const std::uint16_t tag = LoadLittleEndian16(record + kTagAt);
    if (tag != kIntegerPcm) {
        Refuse(kUnsupportedFormat, VRL_L("format tag"), tag);
        return {};
    }
    const std::uint16_t bitsPerSample = LoadLittleEndian16(record + kBitsPerSampleAt);
    if (bitsPerSample != 8 && bitsPerSample != 16) {
        Refuse(kUnsupportedBits, VRL_L("bits"), bitsPerSample);
        return {};
    }

    // Channels and rate are not checked: even 0 is passed on.
    TDataFormat_AudioPcm format;
    format.channels = LoadLittleEndian16(record + kChannelsAt);
    format.samplesPerSec = LoadLittleEndian32(record + kSamplesPerSecAt);
    format.sampleFormat = bitsPerSample == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT;
    return format;
}

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
    const CRefusal refusal(*this);
    // The stream may use or destroy this decoder inside each call.
    const auto chunks = CRefPtr<IWavChunkDecoder>::Share(&Chunks());
    const CFilterCalls::CCall call(calls_);
    try {
        const TConnecting connecting{*chunks, refusal};
        if (!connecting.ConnectChunks(stream)) return;
        if (!connecting.SelectChunk(VRL_L("fmt "), kNoFmtChunk)) return;
        const auto format = connecting.ReadFormat();
        if (!format || !call.IsAlive()) return;
        format_ = *format;
        connecting.SelectChunk(VRL_L("data"), kNoDataChunk);
    } catch (...) {
        // Usually a `CIOException` of the stream; after any failure, nothing stays connected.
        chunks->Disconnect();
        throw;
    }
}

void CWavDecoder::CreateChunks() {
    chunks_ = CreateOrRaise<IWavChunkDecoder>(classid::CWavChunkDecoder, kNoChunkDecoder);
    lender_ = AsLending(chunks_.Get());
}

} // namespace vorlund
