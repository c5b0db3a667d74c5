// A class of the library is made by a function without arguments, so there is a row of classes, each with a
// place in a table, and a registration takes the next one.

#include "OwnDecoders.h"

#include "Guard.h"
#include "HostUser.h"
#include "Records.h"
#include "StreamObject.h"
#include "Texts.h"
#include "vorlund_c/classes.h"

#include <vorlund/DecoderRefusal.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace vorlund::capi {

namespace {

constexpr const wchar* kFile = VRL_L("bindings/c/src/OwnDecoders");
constexpr const wchar* kReason = VRL_L("A callback failed");
constexpr TFailure kRefused{VRL_L("vorlund::capi::COwnDecoder::Connect"), kFile, 1,
                            VRL_L("A callback refused the data")};
constexpr TFailure kConnectFailed{VRL_L("vorlund::capi::COwnDecoder::Connect"), kFile, 2, kReason};
constexpr TFailure kBadFormat{VRL_L("vorlund::capi::COwnDecoder::Connect"), kFile, 3,
                              VRL_L("A callback gave an impossible format")};
constexpr TFailure kNotConnected{VRL_L("vorlund::capi::COwnDecoder::Read"), kFile, 4,
                                 VRL_L("Stream is not connected")};
constexpr TFailure kReadFailed{VRL_L("vorlund::capi::COwnDecoder::Read"), kFile, 5, kReason};
constexpr TFailure kReadTooMuch{VRL_L("vorlund::capi::COwnDecoder::Read"), kFile, 6,
                                VRL_L("A callback gave more than was asked for")};
constexpr TFailure kSeekFailed{VRL_L("vorlund::capi::COwnDecoder::Seek"), kFile, 7, kReason};
constexpr TFailure kNoPositions{VRL_L("vorlund::capi::COwnDecoder::Seek"), kFile, 8,
                                VRL_L("The decoder has no positions")};
constexpr TFailure kNegative{VRL_L("vorlund::capi::COwnDecoder::Seek"), kFile, 9,
                             VRL_L("Position is negative")};
constexpr TFailure kLengthFailed{VRL_L("vorlund::capi::COwnDecoder::GetLength"), kFile, 10, kReason};
constexpr TFailure kNoLength{VRL_L("vorlund::capi::COwnDecoder::GetLength"), kFile, 11,
                             VRL_L("The length is not known")};

struct TRegistration {
    vorlund_decoder_callbacks callbacks;
    void* user;
    /// The class store copies no names.
    wstring name;
};

std::mutex registrationMutex;
std::size_t registrationCount = 0;
std::array<TRegistration, VORLUND_MOST_DECODERS>& Registrations() {
    static auto& rows = *new std::array<TRegistration, VORLUND_MOST_DECODERS>;
    return rows;
}

class COwnDecoderBase : public CInputFilterImpl<IInputStreamFilter> {
public:
    void Connect(IInputStream* stream) override {
        const CRefusal refusal(*this);
        auto next = BeginConnect(stream);
        if (!next) return;
        MakeHandle<CStreamObject>(&source_, next);
        vorlund_audio_format format{sizeof(format), 0, 0, 0};
        void* decoder = nullptr;
        const std::int32_t code =
            CallHost([&] { return callbacks_.connect(user_, source_, &format, &decoder); });
        if (code != VORLUND_OK) {
            ForgetHandle(std::exchange(source_, nullptr));
            if (code == VORLUND_REFUSED) return refusal.Raise<CDataFormatException>(kRefused);
            return refusal.Raise<CIOException>(kConnectFailed);
        }
        decoder_ = decoder;
        isConnected_ = true;
        if (format.sample_format > VORLUND_SAMPLE_FLOAT || format.channels == 0 || format.channels > 1024) {
            EndConnection();
            return refusal.Raise<CDataFormatException>(kBadFormat);
        }
        format_ = TDataFormat_AudioPcm(format.sample_format, format.channels, format.rate);
        position_ = 0;
        isAtEnd_ = false;
        stream_ = std::move(next);
    }
    void Disconnect() override {
        EndConnection();
        CInputFilterImpl::Disconnect();
    }
    std::uint32_t GetCapabilities() override {
        if (!isConnected_) return 0;
        return STREAM_CAPABILITY_READ | STREAM_CAPABILITY_TELL |
               (callbacks_.seek ? STREAM_CAPABILITY_SEEK : 0U);
    }
    std::int64_t GetLength() override {
        if (!isConnected_) return CInputFilterImpl::GetLength();
        if (!callbacks_.length) Raise<COperationNotSupportedException>(kNoLength);
        std::int64_t length = 0;
        if (CallHost([&] { return callbacks_.length(decoder_, &length); }) != VORLUND_OK || length < 0)
            Raise<CIOException>(kLengthFailed);
        return length;
    }
    void Flush() override {}
    void Seek(std::int64_t position) override {
        if (!isConnected_) return CInputFilterImpl::Seek(position);
        if (!callbacks_.seek) Raise<COperationNotSupportedException>(kNoPositions);
        if (position < 0) Raise<CIOException>(kNegative);
        if (CallHost([&] { return callbacks_.seek(decoder_, &position); }) != VORLUND_OK)
            Raise<CIOException>(kSeekFailed);
        position_ = position;
        isAtEnd_ = false;
    }
    std::int64_t Tell() override { return isConnected_ ? position_ : CInputFilterImpl::Tell(); }
    bool Eof() override {
        return !isConnected_ || isAtEnd_ || (callbacks_.length && position_ >= GetLength());
    }
    const TDataFormat& GetFormat() override { return isConnected_ ? format_ : GetEmptyFormat(); }
    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) return CInputFilterImpl::Read(buffer, size);
        if (!isConnected_) Raise<CIOException>(kNotConnected);
        const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kMostAtOnce));
        if (wanted == 0) return 0;
        std::uint32_t count = 0;
        if (CallHost([&] { return callbacks_.read(decoder_, buffer, wanted, &count); }) != VORLUND_OK)
            Raise<CIOException>(kReadFailed);
        if (count > wanted) Raise<CIOException>(kReadTooMuch);
        isAtEnd_ = count == 0;
        position_ += count;
        return count;
    }
    void Skip(std::uint64_t count) override {
        Seek(position_ + static_cast<std::int64_t>(std::min<std::uint64_t>(count, INT64_MAX - position_)));
    }

protected:
    explicit COwnDecoderBase(std::size_t place) {
        const std::lock_guard lock(registrationMutex);
        callbacks_ = Registrations()[place].callbacks;
        user_ = Registrations()[place].user;
    }
    ~COwnDecoderBase() noexcept(false) = default;

    /// While the object is whole, and before the source goes.
    void GiveBack() {
        EndConnection();
        CInputFilterImpl::GiveBack();
    }

private:
    void EndConnection() noexcept {
        if (!std::exchange(isConnected_, false)) return;
        if (callbacks_.disconnect)
            CallHost([&] {
                callbacks_.disconnect(decoder_);
                return VORLUND_OK;
            });
        ForgetHandle(std::exchange(source_, nullptr));
    }

    vorlund_decoder_callbacks callbacks_;
    void* user_;
    vorlund_stream source_ = nullptr;
    void* decoder_ = nullptr;
    bool isConnected_ = false;
    bool isAtEnd_ = false;
    std::int64_t position_ = 0;
    TDataFormat_AudioPcm format_;
};

template <std::size_t kPlace> class COwnDecoder : public COwnDecoderBase {
public:
    inline static CId ClassId;

protected:
    COwnDecoder() : COwnDecoderBase(kPlace) {}
    ~COwnDecoder() noexcept(false) = default;
};

struct TPlaceOfClass {
    TObjectFactory factory;
    CId* id;
};

template <std::size_t... kPlaces>
constexpr std::array<TPlaceOfClass, sizeof...(kPlaces)> MakePlaces(std::index_sequence<kPlaces...>) {
    return {TPlaceOfClass{&NewObject<COwnDecoder<kPlaces>>, &COwnDecoder<kPlaces>::ClassId}...};
}

constexpr auto kPlaces = MakePlaces(std::make_index_sequence<VORLUND_MOST_DECODERS>());

void Register(const CId& id, wstring name, const vorlund_decoder_callbacks& callbacks, void* user) {
    std::size_t place = 0;
    {
        const std::lock_guard lock(registrationMutex);
        if (registrationCount == VORLUND_MOST_DECODERS)
            throw CFailure(VORLUND_ERROR_FAILED, "The program has too many decoders");
        place = registrationCount++;
        Registrations()[place] = {callbacks, user, std::move(name)};
        *kPlaces[place].id = id;
    }
    v.GetClassStore().RegisterClassVrl({id, Registrations()[place].name.c_str(), kPlaces[place].factory});
    v.GetCodecClassStore().RegisterDecoder({id, CId::Null(), TDataFormat_AudioPcm::FormatId});
}

template <class TUnit>
std::int32_t RegisterDecoder(const char* function, const std::uint32_t* classId, const TUnit* name,
                             const vorlund_decoder_callbacks* callbacks, void* user) noexcept {
    return Guarded(function, [&] {
        const auto taken = TakeRecord(callbacks, sizeof(vorlund_decoder_callbacks));
        RequirePointer(reinterpret_cast<const void*>(taken.connect));
        RequirePointer(reinterpret_cast<const void*>(taken.read));
        const CId id = TakeId(classId);
        Require(id != CId::Null(), "The identifier is 0");
        Register(id, TakeText(name), taken, user);
    });
}

} // namespace

void ForgetOwnDecoders() noexcept {
    const std::lock_guard lock(registrationMutex);
    registrationCount = 0;
}

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_decoder_register(const uint32_t* class_id, const char* name,
                                              const vorlund_decoder_callbacks* callbacks, void* user) {
    return RegisterDecoder(__func__, class_id, name, callbacks, user);
}

int32_t VORLUND_CALL vorlund_decoder_register16(const uint32_t* class_id, const uint16_t* name,
                                                const vorlund_decoder_callbacks* callbacks, void* user) {
    return RegisterDecoder(__func__, class_id, name, callbacks, user);
}
