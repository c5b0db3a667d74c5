/// \file
/// Decoder classes whose behaviour a test sets up: which format each accepts, which it produces, and how it
/// goes wrong. Classes are made by plain functions, so there is a fixed number of them and their plans are
/// global.
#pragma once

#include "support/Streams.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Vorlund.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace vorlund::test {

/// A format that means nothing, different for every number.
constexpr CId TestFormat(unsigned int number) {
    return {0x7E57F042, 0x1B3D5F79, 0x8ACE0246, number};
}

/// The class identifier of test decoder `index`.
constexpr CId TestDecoderId(std::size_t index) {
    return {0x7E57DEC0, 0x2C4E6A80, 0x9BDF1357, static_cast<unsigned int>(index)};
}

/// What a decoder does.
struct TDecoderPlan {
    /// The format that it reads; null takes any. Other formats raise `CDataFormatException` in `Connect`.
    CId accepts;
    /// Its own format while it is connected.
    CId produces;
    /// Called by `Connect` before anything else; may raise.
    std::function<void(IInputStream* stream)> onConnect = {};
    /// Called by `GetFormat`; may raise.
    std::function<void()> onGetFormat = {};
    /// `Connect` raises `CDataFormatException` after it has connected, and leaves it so.
    bool refusesConnected = false;
    /// `GetInputStream` says null even when it is connected.
    bool hidesStream = false;
};

/// The plans of all test decoders and what these did. Make one at the start of a test.
class CTestDecoders {
public:
    static constexpr std::size_t kCount = 16;

    CTestDecoders() {
        plans = {};
        events.clear();
    }
    CTestDecoders(const CTestDecoders&) = delete;
    CTestDecoders& operator=(const CTestDecoders&) = delete;

    /// Registers the class of decoder `index` with `v`'s class store and a record of it with `store`. The
    /// record names the formats of the plan.
    void Register(CCodecClassStore& store, std::size_t index, TDecoderPlan plan);

    /// "create 0", "connect 0 to 1" (or "to source"), "refuse 0", "destroy 0".
    static inline TCallLog events;
    static inline std::array<TDecoderPlan, kCount> plans;

    /// The number of events with this text.
    static std::size_t CountEvents(const std::string& text) {
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), text));
    }
};

inline constexpr TFailure kDecoderRefuses{VRL_L("test::CTestDecoder::Connect"),
                                          VRL_L("tests/support/TestDecoders"), 1, VRL_L("Not my format")};

/// Test decoder number `index`.
template <std::size_t index> class CTestDecoder : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId = TestDecoderId(index);

    CTestDecoder() { Record("create"); }

    const TDataFormat& GetFormat() override {
        if (plan_.onGetFormat) plan_.onGetFormat();
        return stream_ ? format_ : GetEmptyFormat();
    }
    void Connect(IInputStream* stream) override {
        if (plan_.onConnect) plan_.onConnect(stream);
        if (plan_.accepts != CId::Null() && stream->GetFormat().id != plan_.accepts) Refuse();
        TLayer::Connect(stream);
        if (plan_.refusesConnected) Refuse();
        Record("connect", Describe(stream));
    }
    IInputStream* GetInputStream() override { return plan_.hidesStream ? nullptr : TLayer::GetInputStream(); }

protected:
    ~CTestDecoder() noexcept(false) { Record("destroy"); }

private:
    void Record(const std::string& what, const std::string& where = {}) const {
        CTestDecoders::events.push_back(what + " " + std::to_string(index) + where);
    }
    [[noreturn]] void Refuse() const {
        Record("refuse");
        Raise<CDataFormatException>(kDecoderRefuses);
    }
    static std::string Describe(IInputStream* stream) {
        for (std::size_t i = 0; i < CTestDecoders::kCount; ++i) {
            if (stream->GetClassId() == TestDecoderId(i)) return " to " + std::to_string(i);
        }
        return " to source";
    }

    const TDecoderPlan& plan_ = CTestDecoders::plans[index];
    TDataFormat format_ = HeadOnly(plan_.produces);
    CLiveObject live_;
};

namespace testdecoders {
template <std::size_t... indices>
constexpr std::array<TObjectFactory, sizeof...(indices)> Factories(std::index_sequence<indices...>) {
    return {&NewObject<CTestDecoder<indices>>...};
}
} // namespace testdecoders

inline void CTestDecoders::Register(CCodecClassStore& store, std::size_t index, TDecoderPlan plan) {
    static constexpr auto kFactories = testdecoders::Factories(std::make_index_sequence<kCount>());
    v.GetClassStore().RegisterClassVrl(
        {TestDecoderId(index), VRL_L("test::CTestDecoder"), kFactories.at(index)});
    store.RegisterDecoder({TestDecoderId(index), plan.accepts, plan.produces});
    plans.at(index) = std::move(plan);
}

} // namespace vorlund::test
