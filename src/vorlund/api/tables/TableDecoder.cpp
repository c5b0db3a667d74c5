#include "vorlund/api/tables/TableDecoder.h"

#include "vorlund/api/values/PathReason.h"

#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

namespace vorlund::tables {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/tables/TableDecoder");
constexpr const wchar* kConnect = VRL_L("vorlund::CTableDecoder::Connect");
constexpr const wchar* kRead = VRL_L("vorlund::CTableDecoder::Read");
constexpr const wchar* kSeek = VRL_L("vorlund::CTableDecoder::Seek");

constexpr TFailure kOtherData{kConnect, kFile, 31, VRL_L("Data are of another kind")};
constexpr TFailure kDamaged{kConnect, kFile, 32, VRL_L("Data are damaged or not supported")};
constexpr TFailure kUnreadable{kConnect, kFile, 33, VRL_L("Input cannot be read")};
constexpr TFailure kNotOpened{kConnect, kFile, 34, VRL_L("Decoder failed")};
constexpr TFailure kConnectClosed{kConnect, kFile, 35, VRL_L("Plug-in is closed")};
constexpr TFailure kLengthNotKnown{VRL_L("vorlund::CTableDecoder::GetLength"), kFile, 41,
                                   VRL_L("Length is not known")};
constexpr TFailure kNegative{kSeek, kFile, 51, VRL_L("Position is negative")};
constexpr TFailure kNoPositions{kSeek, kFile, 52, VRL_L("Stream has no positions")};
constexpr TFailure kReadClosed{kRead, kFile, 61, VRL_L("Plug-in is closed")};
constexpr TFailure kBusy{kRead, kFile, 62, VRL_L("Decoder is being used")};
constexpr TFailure kReadFailed{kRead, kFile, 63, VRL_L("Decoder failed")};

/// A call of a plug-in is not asked for more at a time.
constexpr std::uint64_t kMaxRead = std::uint64_t{1} << 30;

/// With the plug-in's reason, if it has one. That lies where other reasons of the moment lie.
template <class TException> [[noreturn]] void RaiseExplained(const TFailure& failure, const wstring& reason) {
    Raise<TException>(failure, reason.empty() ? failure.reason : PathReason(VRL_L("%s"), reason.c_str()));
}

} // namespace

IObject* NewDecoder(const TClassPtr& tableClass) {
    return new CFinalObject<CTableDecoder>(tableClass);
}

CTableDecoder::CTableDecoder(TClassPtr tableClass) : ClassId(tableClass->id), class_(std::move(tableClass)) {}

void CTableDecoder::Connect(IInputStream* stream) {
    const CRefusal refusal(*this);
    auto next = BeginConnect(stream);
    if (!next) return;
    if (!class_->life->isOpen) return refusal.Raise<CDataFormatException>(kConnectClosed);
    const CFilterCalls::CCall call(calls_);
    const auto instance = std::make_shared<CTableInstance>(class_, next);
    const TAnswer answer = instance->Open();
    // The stream may have destroyed the filter, or connected it to another one.
    if (!call.IsUnchanged()) return;
    switch (answer.code) {
    case VORLUND_PLUGIN_OK:
        break;
    case VORLUND_PLUGIN_OTHER_DATA:
        // What most decoders say of most files.
        return refusal.Raise<CDataFormatException>(kOtherData);
    case VORLUND_PLUGIN_UNREADABLE:
        RaiseExplained<CIOException>(kUnreadable, answer.reason);
    case VORLUND_PLUGIN_DAMAGED:
    case VORLUND_PLUGIN_NOT_SUPPORTED:
        RaiseExplained<CDataFormatException>(kDamaged, answer.reason);
    default:
        RaiseExplained<CDataFormatException>(kNotOpened, answer.reason);
    }
    SetFormat(instance->GetOpened().format);
    position_ = 0;
    pluginPosition_ = 0;
    hasEnded_ = false;
    instance_ = instance;
    stream_ = std::move(next);
}

void CTableDecoder::Disconnect() {
    // Closed at the end, because that may call the stream, which may let go of this filter.
    const auto instance = std::exchange(instance_, nullptr);
    TLayer::Disconnect();
}

void CTableDecoder::GiveBack() {
    const auto instance = std::exchange(instance_, nullptr);
    TLayer::GiveBack();
}

void CTableDecoder::SetFormat(const vorlund_plugin_format& format) {
    alignas(TDataFormat) std::byte bytes[sizeof format];
    std::memcpy(bytes, &format, sizeof format);
    format_.Set(*reinterpret_cast<const TDataFormat*>(bytes));
}

std::uint32_t CTableDecoder::GetCapabilities() {
    if (!instance_) return TLayer::GetCapabilities();
    constexpr std::uint32_t kForward = STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ;
    return instance_->HasPositions() ? kForward | STREAM_CAPABILITY_SEEK : kForward;
}

const TDataFormat& CTableDecoder::GetFormat() {
    if (!instance_) return GetEmptyFormat();
    return format_.Get();
}

std::int64_t CTableDecoder::GetLength() {
    if (!instance_) return TLayer::GetLength();
    const std::int64_t length = instance_->GetOpened().length;
    if (length < 0) Raise<COperationNotSupportedException>(kLengthNotKnown);
    return length;
}

std::uint64_t CTableDecoder::GetRest() const {
    const std::int64_t length = instance_->GetOpened().length;
    const std::int64_t end = length < 0 ? std::numeric_limits<std::int64_t>::max() : length;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(end - position_, 0));
}

void CTableDecoder::Seek(std::int64_t position) {
    if (!instance_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kNegative);
    const std::int64_t length = instance_->GetOpened().length;
    const std::int64_t wanted = length < 0 ? position : std::min(position, length);
    if (wanted == position_) return;
    if (!instance_->HasPositions()) Raise<COperationNotSupportedException>(kNoPositions);
    position_ = wanted;
    hasEnded_ = false;
}

bool CTableDecoder::GoToPosition(const std::shared_ptr<CTableInstance>& instance,
                                 const CFilterCalls::CCall& call) {
    if (pluginPosition_ == position_) return true;
    if (!instance->HasPositions()) RaiseExplained<CIOException>(kReadFailed, {});
    const std::int64_t wanted = position_;
    pluginPosition_ = -1;
    const TAnswer answer = instance->Seek(wanted);
    if (!call.IsUnchanged()) return false;
    if (answer.code != VORLUND_PLUGIN_OK) RaiseExplained<CIOException>(kReadFailed, answer.reason);
    pluginPosition_ = wanted;
    return true;
}

std::uint64_t CTableDecoder::Read(void* buffer, std::uint64_t size) {
    if (!buffer || !instance_) return TLayer::Read(buffer, size);
    if (!instance_->IsAlive()) Raise<CInvalidStateException>(kReadClosed);
    if (instance_->IsBusy()) Raise<CInvalidStateException>(kBusy);
    const std::uint64_t wanted = std::min({size, GetRest(), kMaxRead});
    if (wanted == 0 || hasEnded_) return 0;
    const CFilterCalls::CCall call(calls_);
    const auto instance = instance_;
    if (!GoToPosition(instance, call)) return 0;
    const std::int64_t from = std::exchange(pluginPosition_, -1);
    std::uint32_t count = 0;
    const TAnswer answer = instance->Read(buffer, static_cast<std::uint32_t>(wanted), count);
    if (!call.IsUnchanged()) return count;
    if (answer.code != VORLUND_PLUGIN_OK) RaiseExplained<CIOException>(kReadFailed, answer.reason);
    hasEnded_ = count == 0;
    pluginPosition_ = from + count;
    position_ = pluginPosition_;
    return count;
}

void CTableDecoder::Skip(std::uint64_t count) {
    if (!instance_) return;
    if (instance_->HasPositions())
        return Seek(position_ + static_cast<std::int64_t>(std::min(count, GetRest())));
    std::uint8_t dropped[4096];
    const CFilterCalls::CCall call(calls_);
    while (count > 0 && call.IsUnchanged()) {
        const std::uint64_t done = Read(dropped, std::min<std::uint64_t>(count, sizeof dropped));
        if (done == 0) return;
        count -= done;
    }
}

} // namespace vorlund::tables
