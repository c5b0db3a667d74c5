// The search for decoders in another process: what it tells becomes the report, and its chain a stream.
#include "vorlund/api/isolation/IsolatedStream.h"
#include "vorlund/api/plugins/InstalledFolder.h"
#include "vorlund/api/plugins/PluginScan.h"
#include "vorlund/data/codecs/DecodeRecorder.h"

#include <vorlund/IsolatedDecoder.h>
#include <vorlund/ObjectImpl.h>

#include <algorithm>
#include <string>
#include <utility>

namespace vorlund {
namespace {

using namespace isolation;

constexpr const wchar* kFile = VRL_L("src/vorlund/api/isolation/IsolatedDecoder");
constexpr const wchar* kMethod = VRL_L("vorlund::DecodeIsolated");

constexpr TFailure kNoStream{kMethod, kFile, 1, VRL_L("stream is NULL")};
constexpr TFailure kNoFormat{kMethod, kFile, 2, VRL_L("No format is wanted")};
constexpr TFailure kNotStarted{kMethod, kFile, 3, VRL_L("Cannot start the process of the decoders")};
constexpr TFailure kUnsafe{kMethod, kFile, 4, VRL_L("This system does not isolate processes")};
constexpr TFailure kNotDecoded{kMethod, kFile, 5, VRL_L("Cannot decode stream")};

/// More candidates than any search has.
constexpr int kMaxMessages = 10000;
constexpr std::uint32_t kMaxRecord = 4096;
/// Of an image or a frame, in bytes, and of a frame of audio.
constexpr std::uint64_t kMaxImage = 0x7FFFFFFF;
constexpr std::uint32_t kMaxChannels = 1024;

/// A text of the other process, which may end up on a terminal.
CString GetSafeText(CReceived& message) {
    wstring text = message.GetText();
    const auto isControl = [](wchar unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); };
    std::replace_if(text.begin(), text.end(), isControl, VRL_L(' '));
    return text.c_str();
}

TDecodeEntry GetEntry(CReceived& message) {
    TDecodeEntry entry;
    entry.classId = message.Get<CId>();
    entry.className = GetSafeText(message);
    entry.depth = std::clamp(message.Get<int>(), 0, 1000);
    const auto outcome = message.Get<std::int32_t>();
    entry.outcome = outcome >= DECODE_CONNECTED && outcome < DECODE_DIED
                        ? static_cast<TDecodeOutcome>(outcome)
                        : DECODE_RAISED;
    const auto type = message.Get<std::int32_t>();
    entry.exceptionType = type >= EXCEPTION_TYPE_GENERIC && type <= EXCEPTION_TYPE_DATA_NOT_SUPPORTED
                              ? static_cast<TExceptionType>(type)
                              : EXCEPTION_TYPE_GENERIC;
    for (CString TDecodeEntry::*text :
         {&TDecodeEntry::method, &TDecodeEntry::reason, &TDecodeEntry::container, &TDecodeEntry::values,
          &TDecodeEntry::remarks})
        entry.*text = GetSafeText(message);
    entry.bytesRead = message.Get<std::uint64_t>();
    entry.seconds = message.Get<double>();
    return entry;
}

bool IsPossible(const TDataFormat_AudioPcm& format) {
    return format.sampleFormat <= SAMPLE_FORMAT_FLOAT && format.channels > 0 &&
           format.channels <= kMaxChannels && format.samplesPerSec > 0;
}

bool IsPossible(const TDataFormat_ImageRgb& format) {
    const std::uint64_t bits = format.pixelFormat.bitsPerPixel;
    if (bits == 0 || bits > 128 || format.width == 0 || format.height == 0) return false;
    return std::uint64_t{format.width} * format.height <= kMaxImage / ((bits + 7) / 8);
}

bool IsPossible(const TDataFormat_VideoRgb& format) {
    return format.image.id == TDataFormat_ImageRgb::FormatId && format.image.size == sizeof(format.image) &&
           IsPossible(format.image);
}

/// Whether a record of that kind has its size and values with which one can work.
template <class TFormat> bool IsGood(std::span<const std::uint8_t> bytes) {
    TFormat format;
    if (bytes.size() != sizeof(format)) return false;
    std::memcpy(static_cast<void*>(&format), bytes.data(), sizeof(format));
    return IsPossible(format);
}

/// The format at the end of a message; false for one that programs could stumble over.
bool GetFormat(CReceived& message, CFormatRecord& record) {
    const std::span<const std::uint8_t> bytes = message.GetRest();
    TDataFormat head;
    if (bytes.size() < sizeof(head) || bytes.size() > kMaxRecord) return false;
    std::memcpy(static_cast<void*>(&head), bytes.data(), sizeof(head));
    if (head.size != bytes.size()) return false;
    if (head.id == TDataFormat_AudioPcm::FormatId && !IsGood<TDataFormat_AudioPcm>(bytes)) return false;
    if (head.id == TDataFormat_ImageRgb::FormatId && !IsGood<TDataFormat_ImageRgb>(bytes)) return false;
    if (head.id == TDataFormat_VideoRgb::FormatId && !IsGood<TDataFormat_VideoRgb>(bytes)) return false;
    // Aligned for its numbers.
    alignas(TDataFormat) std::uint8_t copy[kMaxRecord];
    std::memcpy(copy, bytes.data(), bytes.size());
    record.Set(*reinterpret_cast<const TDataFormat*>(copy));
    return true;
}

/// What is known of a decoder that is about to be tried.
struct TCandidate {
    CId classId;
    CString className = VRL_L("the process of the decoders");
};

wstring DescribeEnd(const TConversationEnded& ended) {
    switch (ended.end) {
    case TEnd::Died:
        return VRL_L("its process died");
    case TEnd::Silent:
        return VRL_L("its process does not answer");
    default:
        return VRL_L("its process gave no proper answer");
    }
}

template <class TNumber> wstring ToText(TNumber number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

TDecodeEntry MakeEntry(const TCandidate& candidate, const TConversationEnded& ended) {
    TDecodeEntry entry;
    entry.classId = candidate.classId;
    entry.className = candidate.className;
    entry.outcome = DECODE_DIED;
    entry.reason = DescribeEnd(ended).c_str();
    if (ended.end == TEnd::Died) {
        entry.values = (VRL_L("code ") + ToText(ended.code)).c_str();
    }
    return entry;
}

/// Listens to the search, until it has found a chain or not.
class CRemoteSearch {
public:
    CRemoteSearch(CConversation& conversation, IInputStream& source, CDecodeRecorder& recorder)
        : conversation_(conversation), source_(source), recorder_(recorder) {}

    /// False when there is no chain.
    bool Run(const CId& formatId, TFoundChain& chain) {
        CMessage question(TKind::Open);
        const std::uint32_t capabilities = source_.GetCapabilities();
        question.Put(formatId).Put(capabilities).Put(GetLength());
        conversation_.Ask(question);
        for (int i = 0; i < kMaxMessages; ++i) {
            CReceived message = conversation_.Listen(source_);
            switch (message.GetKind()) {
            case TKind::Trying:
                candidate_.classId = message.Get<CId>();
                candidate_.className = GetSafeText(message);
                break;
            case TKind::Entry:
                recorder_.Add(GetEntry(message));
                break;
            case TKind::Found:
                chain.capabilities = message.Get<std::uint32_t>() & kCapabilities;
                chain.length = message.Get<std::int64_t>();
                chain.names = GetSafeText(message).GetBuffer();
                if (!GetFormat(message, chain.format) || chain.format.Get().id != formatId ||
                    chain.length < kNoLength)
                    conversation_.EndGarbled();
                return true;
            case TKind::Unsafe:
                Raise<CFailedException>(kUnsafe);
            case TKind::NotFound:
                if (message.IsWhole()) return false;
                conversation_.EndGarbled();
            default:
                conversation_.EndGarbled();
            }
            if (!message.IsWhole()) conversation_.EndGarbled();
        }
        conversation_.EndGarbled();
    }

    const TCandidate& GetCandidate() const { return candidate_; }

private:
    static constexpr std::uint32_t kCapabilities =
        STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ;

    std::int64_t GetLength() const {
        try {
            return std::max(source_.GetLength(), kNoLength);
        } catch (const COperationNotSupportedException&) {
            return kNoLength;
        }
    }

    CConversation& conversation_;
    IInputStream& source_;
    CDecodeRecorder& recorder_;
    TCandidate candidate_;
};

std::vector<wstring> GetArguments(const TIsolation& isolation) {
    std::vector<wstring> arguments{VRL_L("--decode"), ToText(isolation.memory)};
    for (const wchar* const folder : isolation.folders) arguments.emplace_back(folder);
    if (isolation.withInstalled) {
        const wstring installed = FindInstalledPlugins();
        if (!installed.empty()) arguments.push_back(installed);
    }
    return arguments;
}

} // namespace

IInputStream* DecodeIsolated(IInputStream* stream, const CId& formatId, const TIsolation& isolation) {
    if (!stream) Raise<CNullPtrException>(kNoStream);
    if (formatId == CId::Null()) Raise<CInvalidParameterException>(kNoFormat);
    const auto source = CRefPtr<IInputStream>::Share(stream);
    CDecodeRecorder recorder(isolation.report);
    // First, as only an object of the library can be the result.
    const auto result = CRefPtr<CIsolatedStream>::Adopt(new CFinalObject<CIsolatedStream>);
    const wstring helper = isolation.helper ? wstring(isolation.helper) : pluginscan::FindHelper();
    const auto conversation =
        std::make_shared<CConversation>(helper.c_str(), GetArguments(isolation), isolation.seconds);
    if (!conversation->IsStarted()) Raise<CFailedException>(kNotStarted);
    TFoundChain chain;
    CRemoteSearch search(*conversation, *source, recorder);
    bool isFound = false;
    try {
        isFound = search.Run(formatId, chain);
    } catch (const TConversationEnded& ended) {
        recorder.Add(MakeEntry(search.GetCandidate(), ended));
    }
    if (!isFound) {
        recorder.SetNotFound(*source);
        Raise<CDataFormatException>(kNotDecoded);
    }
    recorder.SetFound();
    result->Begin(source, conversation, std::move(chain));
    return CRefPtr<IInputStream>::Share(result.Get()).Detach();
}

} // namespace vorlund
