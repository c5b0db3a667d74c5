// The search for a chain of decoders, through `CCodecClassStore::DecodeStream`.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/TestDecoders.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr TFailure kOnRequest{VRL_L("test::OnRequest"), VRL_L("tests/data/DecoderSearch_test"), 1,
                              VRL_L("on request")};

class DecoderSearch : public testing::Test {
protected:
    DecoderSearch() {
        store_.Init();
        source_->format = HeadOnly(TestFormat(1));
        source_->log = &log_;
    }
    /// Whatever happened, nothing is left behind and the source was neither moved nor read.
    ~DecoderSearch() noexcept override {
        EXPECT_EQ(ReferencesOf(source_.Get()), 1);
        EXPECT_EQ(CLiveObject::GetCount(), before_ + 1);
        EXPECT_TRUE(log_.empty());
        store_.Close();
    }

    void Register(std::size_t index, TDecoderPlan plan) {
        decoders_.Register(store_, index, std::move(plan));
    }
    /// Decoders 0 to `count` - 1: each takes the format of the one before it, and the first the source's.
    void RegisterChain(std::size_t count) {
        for (unsigned int i = 0; i < count; ++i)
            Register(i, {.accepts = TestFormat(i + 1), .produces = TestFormat(i + 2)});
    }
    CRefPtr<IInputStream> Decode(const CId& wanted) {
        return CRefPtr<IInputStream>::Adopt(store_.DecodeStream(source_.Get(), wanted));
    }
    void ExpectNoChain(const CId& wanted) {
        ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream, [&] { Decode(wanted); });
    }

    CLibraryScope library_;
    int before_ = CLiveObject::GetCount();
    TCallLog log_;
    CTestDecoders decoders_;
    CCodecClassStore store_;
    CRefPtr<CMemoryInputStream> source_ = Make<CMemoryInputStream>();
};

// What needs no search.

TEST_F(DecoderSearch, NullStreamGivesNull) {
    RegisterChain(1);
    EXPECT_EQ(store_.DecodeStream(nullptr, TestFormat(2)), nullptr);
    EXPECT_EQ(store_.DecodeStream(nullptr, CId::Null()), nullptr);
    EXPECT_TRUE(decoders_.events.empty());
}

TEST_F(DecoderSearch, StreamInTheWantedFormatIsReturnedItself) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(1)});
    const int number = NewProbe()->GetObjectNumber();
    const auto decoded = Decode(TestFormat(1));
    EXPECT_EQ(decoded.Get(), source_.Get());
    EXPECT_EQ(ReferencesOf(source_.Get()), 2);
    EXPECT_TRUE(decoders_.events.empty());
    // No object of any kind was made.
    EXPECT_EQ(NewProbe()->GetObjectNumber(), number + 1);
}

// With a wanted format.

TEST_F(DecoderSearch, NoDecoderNoChain) {
    ExpectNoChain(TestFormat(2));
}

TEST_F(DecoderSearch, OneDecoder) {
    RegisterChain(1);
    auto decoded = Decode(TestFormat(2));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(0));
    EXPECT_EQ(decoded->GetFormat().id, TestFormat(2));
    EXPECT_EQ(ReferencesOf(decoded.Get()), 1);
    EXPECT_EQ(ReferencesOf(source_.Get()), 2);
    decoded.Reset();
    EXPECT_EQ(decoders_.events, (TCallLog{"create 0", "connect 0 to source", "destroy 0"}));
}

TEST_F(DecoderSearch, FormatThatNoChainReaches) {
    RegisterChain(3);
    ExpectNoChain(TestFormat(9));
    EXPECT_EQ(decoders_.CountEvents("connect 0 to source"), 1U);
    EXPECT_EQ(decoders_.CountEvents("connect 1 to 0"), 1U);
    EXPECT_EQ(decoders_.CountEvents("connect 2 to 1"), 1U);
}

TEST_F(DecoderSearch, SourceThatNoDecoderAccepts) {
    source_->format = HeadOnly(TestFormat(77));
    RegisterChain(3);
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(decoders_.events, (TCallLog{"create 0", "create 1", "create 2", "refuse 0", "refuse 1",
                                          "refuse 2", "destroy 0", "destroy 1", "destroy 2"}));
}

TEST_F(DecoderSearch, ChainInAnyOrderOfRegistration) {
    Register(2, {.accepts = TestFormat(3), .produces = TestFormat(4)});
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(1, {.accepts = TestFormat(2), .produces = TestFormat(3)});
    const auto decoded = Decode(TestFormat(4));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(2));
    EXPECT_EQ(decoders_.events,
              (TCallLog{"create 2", "create 0", "create 1", "refuse 2", "connect 0 to source", "refuse 2",
                        "connect 1 to 0", "connect 2 to 1"}));
}

TEST_F(DecoderSearch, CandidatesOutsideTheChainAreDestroyed) {
    Register(0, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(2, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto decoded = Decode(TestFormat(2));
    EXPECT_EQ(decoders_.events, (TCallLog{"create 0", "create 1", "create 2", "refuse 0",
                                          "connect 1 to source", "destroy 0", "destroy 2"}));
}

TEST_F(DecoderSearch, FirstOfTwoEqualRecordsWins) {
    Register(5, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(3, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(5));
    EXPECT_EQ(decoders_.CountEvents("connect 3 to source"), 0U);
}

TEST_F(DecoderSearch, GoesDepthFirst) {
    // The first decoder leads to the wanted format by a detour, the last one at once.
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(3)});
    Register(1, {.accepts = TestFormat(3), .produces = TestFormat(4)});
    Register(2, {.accepts = TestFormat(4), .produces = TestFormat(2)});
    Register(3, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(2));
}

TEST_F(DecoderSearch, TurnsBackFromABranchThatLeadsNowhere) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(9)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto decoded = Decode(TestFormat(2));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(1));
    EXPECT_EQ(decoders_.events, (TCallLog{"create 0", "create 1", "connect 0 to source", "refuse 1",
                                          "connect 1 to source", "destroy 0"}));
}

TEST_F(DecoderSearch, CandidateOfAFailedBranchIsNotTriedAgain) {
    // Source, 1, 0, 2 would be a chain, but 0 takes the source first and stays there.
    Register(0, {.accepts = CId::Null(), .produces = TestFormat(5)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(2, {.accepts = TestFormat(5), .produces = TestFormat(3), .onConnect = [](IInputStream* stream) {
                     const auto filter = CRefPtr<IInputStream>::Share(stream).Query<IInputStreamFilter>();
                     if (!filter) return;
                     const auto below = CRefPtr<IInputStream>::Adopt(filter->GetInputStream());
                     if (below->GetClassId() != TestDecoderId(1)) Raise<CDataFormatException>(kOnRequest);
                 }});
    ExpectNoChain(TestFormat(3));
    EXPECT_EQ(decoders_.events,
              (TCallLog{"create 0", "create 1", "create 2", "connect 0 to source", "refuse 1",
                        "connect 1 to source", "refuse 2", "destroy 0", "destroy 1", "destroy 2"}));
}

TEST_F(DecoderSearch, NineDecodersAreAChain) {
    RegisterChain(9);
    auto decoded = Decode(TestFormat(10));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(8));
    EXPECT_EQ(CLiveObject::GetCount(), before_ + 10);
}

TEST_F(DecoderSearch, TenDecodersAreNone) {
    RegisterChain(10);
    ExpectNoChain(TestFormat(11));
    EXPECT_EQ(decoders_.CountEvents("connect 8 to 7"), 1U);
    EXPECT_EQ(decoders_.CountEvents("connect 9 to 8"), 0U);
}

TEST_F(DecoderSearch, DepthIsCountedBackWhenABranchEnds) {
    // Nine steps that lead nowhere, then one step that does.
    RegisterChain(9);
    Register(9, {.accepts = TestFormat(1), .produces = TestFormat(50)});
    Register(10, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    EXPECT_EQ(Decode(TestFormat(51))->GetClassId(), TestDecoderId(10));
}

// Which decoders are candidates.

struct TMediaRow {
    const char* name;
    CId format;
};
constexpr TMediaRow kMediaRows[] = {{"Audio", TDataFormat_AudioPcm::FormatId},
                                    {"Image", TDataFormat_ImageRgb::FormatId},
                                    {"Video", TDataFormat_VideoRgb::FormatId},
                                    {"Other", OTHER_MEDIA_FORMAT_ID}};

TEST_F(DecoderSearch, DecodersOfOtherMediaFormatsAreNeverCreated) {
    for (std::size_t i = 0; i < std::size(kMediaRows); ++i) {
        Register(i, {.accepts = TestFormat(1), .produces = kMediaRows[i].format});
    }
    Register(4, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    for (std::size_t wanted = 0; wanted < std::size(kMediaRows); ++wanted) {
        SCOPED_TRACE(kMediaRows[wanted].name);
        decoders_.events.clear();
        EXPECT_EQ(Decode(kMediaRows[wanted].format)->GetClassId(), TestDecoderId(wanted));
        for (std::size_t i = 0; i < std::size(kMediaRows); ++i) {
            EXPECT_EQ(decoders_.CountEvents("create " + std::to_string(i)), i == wanted ? 1U : 0U);
        }
        EXPECT_EQ(decoders_.CountEvents("create 4"), 1U);
    }
}

TEST_F(DecoderSearch, EveryDecoderIsCreatedForAFormatThatIsNoMedia) {
    for (std::size_t i = 0; i < std::size(kMediaRows); ++i) {
        Register(i, {.accepts = TestFormat(50), .produces = kMediaRows[i].format});
    }
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Decode(CId::Null()).Get(), source_.Get());
    for (std::size_t i = 0; i < std::size(kMediaRows); ++i) {
        EXPECT_EQ(decoders_.CountEvents("create " + std::to_string(i)), 2U);
    }
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(DecoderSearch, RecordsWithoutAFilterAreSkipped) {
    constexpr CId kNothing{0x7E57DEC2, 1, 2, 3};
    v.GetClassStore().RegisterClassVrl({kNothing, VRL_L("test::NoObject"), &NoObject});
    for (const CId& classId :
         {kNothing, classid::CObject, classid::CInputStream, classid::COutputStreamFilter}) {
        store_.RegisterDecoder({classId, TestFormat(1), TestFormat(2)});
    }
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Decode(CId::Null()).Get(), source_.Get());
    RegisterChain(1);
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(0));
}

/// An enumeration that gives other objects too: before each of its own an object that holds no pointer, and
/// one whose pointer is null.
class CMixedEnumerator : public CObjectImpl<IPushObjectEnumerator> {
public:
    static constexpr CId ClassId{0x7E57DEC2, 1, 2, 4};

    void Push(IObject* object) override {
        objects_.Share(NewProbe().Get());
        objects_.Share(CreateAs<IPtrObject>(classid::CPtrObject).Get());
        objects_.Share(object);
    }
    void Reserve(unsigned int) override {}
    bool HasNext() override { return next_ < objects_.GetCount(); }
    IObject* GetNext() override {
        if (!HasNext()) return nullptr;
        IObject* const object = objects_[next_++];
        object->AddRef();
        return object;
    }

private:
    CReferenceList<IObject> objects_;
    std::size_t next_ = 0;
};

TEST_F(DecoderSearch, ObjectsThatHoldNoRecordArePassedOver) {
    const TClassInfo kept = *v.GetClassStore().GetClassInfo(classid::CPtrObject);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(kept);
    v.GetClassStore().RegisterClassVrl({classid::CPushObjectEnumerator, VRL_L("test::CMixedEnumerator"),
                                        []() -> IObject* { return NewObject<CMixedEnumerator>(); }});
    RegisterChain(2);
    EXPECT_EQ(Decode(TestFormat(3))->GetClassId(), TestDecoderId(1));
}

TEST_F(DecoderSearch, ClassesThatAreNoLongerRegisteredAreSkipped) {
    RegisterChain(1);
    const TClassInfo kept[] = {*v.GetClassStore().GetClassInfo(classid::CPushObjectEnumerator),
                               *v.GetClassStore().GetClassInfo(classid::CPtrObject)};
    v.GetClassStore().Clear();
    for (const TClassInfo& info : kept) v.GetClassStore().RegisterClassVrl(info);
    ExpectNoChain(TestFormat(2));
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(1));
}

TEST_F(DecoderSearch, ObjectsAreMadeThroughTheClassStoreInOrder) {
    Register(0, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const int number = NewProbe()->GetObjectNumber();
    const auto decoded = Decode(TestFormat(2));
    // An enumerator, two wrappers of records, two decoders.
    EXPECT_EQ(decoded->GetObjectNumber(), number + 5);
    EXPECT_EQ(NewProbe()->GetObjectNumber(), number + 6);
}

// Without a wanted format.

TEST_F(DecoderSearch, WithoutADecoderTheStreamItselfIsTheLongestChain) {
    const auto decoded = Decode(CId::Null());
    EXPECT_EQ(decoded.Get(), source_.Get());
    EXPECT_EQ(ReferencesOf(source_.Get()), 2);
}

TEST_F(DecoderSearch, StreamThatNoDecoderAcceptsIsReturnedItself) {
    source_->format = GetEmptyFormat();
    RegisterChain(2);
    const auto decoded = Decode(CId::Null());
    EXPECT_EQ(decoded.Get(), source_.Get());
    EXPECT_EQ(ReferencesOf(source_.Get()), 2);
    EXPECT_EQ(decoders_.events,
              (TCallLog{"create 0", "create 1", "refuse 0", "refuse 1", "destroy 0", "destroy 1"}));
}

TEST_F(DecoderSearch, LongestChainTriesAgainWhatRefusedBefore) {
    Register(0, {.accepts = TestFormat(2), .produces = TestFormat(3)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(2, {.accepts = TestFormat(3), .produces = TestFormat(4)});
    Register(3, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    const auto decoded = Decode(CId::Null());
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(2));
    EXPECT_EQ(ReferencesOf(decoded.Get()), 1);
    EXPECT_EQ(decoders_.events,
              (TCallLog{"create 0", "create 1", "create 2", "create 3", "refuse 0", "connect 1 to source",
                        "connect 0 to 1", "connect 2 to 0", "refuse 3", "destroy 3"}));
}

TEST_F(DecoderSearch, LongestChainTakesTheFirstThatAccepts) {
    // 1 would have led further.
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(9)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(2, {.accepts = TestFormat(2), .produces = TestFormat(3)});
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(0));
}

TEST_F(DecoderSearch, LongestChainHasNoLimit) {
    RegisterChain(CTestDecoders::kCount);
    const auto decoded = Decode(CId::Null());
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(CTestDecoders::kCount - 1));
    EXPECT_EQ(CLiveObject::GetCount(), before_ + 1 + static_cast<int>(CTestDecoders::kCount));
}

TEST_F(DecoderSearch, LongestChainUsesEachDecoderOnce) {
    for (std::size_t i = 0; i < 4; ++i) Register(i, {.accepts = CId::Null(), .produces = TestFormat(1)});
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(3));
    EXPECT_EQ(decoders_.CountEvents("connect 0 to source"), 1U);
    EXPECT_EQ(decoders_.CountEvents("connect 3 to 2"), 1U);
}

// Decoders that misbehave.

struct TFailureRow {
    const char* name;
    std::function<void()> raise;
};
class DecoderSearchPassedOver : public DecoderSearch, public testing::WithParamInterface<TFailureRow> {
protected:
    ~DecoderSearchPassedOver() noexcept override {}
};

TEST_P(DecoderSearchPassedOver, CandidateIsPassedOver) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [](IInputStream*) {
                     GetParam().raise();
                 }});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(1));
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(1));
    ExpectNoChain(TestFormat(3));
}

TEST_P(DecoderSearchPassedOver, CandidateIsTriedAgainFurtherOn) {
    Register(0, {.accepts = CId::Null(), .produces = TestFormat(3), .onConnect = [](IInputStream* stream) {
                     if (stream->GetFormat().id != TestFormat(2)) GetParam().raise();
                 }});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(3))->GetClassId(), TestDecoderId(0));
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(0));
}

INSTANTIATE_TEST_SUITE_P(Rows, DecoderSearchPassedOver,
                         testing::Values(TFailureRow{"DataFormat",
                                                     [] { Raise<CDataFormatException>(kOnRequest); }},
                                         TFailureRow{"Io", [] { Raise<CIOException>(kOnRequest); }}),
                         [](const auto& row) { return row.param.name; });

class DecoderSearchPassesOn : public DecoderSearch, public testing::WithParamInterface<TFailureRow> {
protected:
    ~DecoderSearchPassesOn() noexcept override {}

    /// Raises what the row raises, from the search with a wanted format and from the one without.
    void ExpectPassesOn() {
        for (const CId& wanted : {TestFormat(9), CId::Null()}) {
            std::string expected;
            try {
                GetParam().raise();
            } catch (const CException& exception) {
                expected = Narrow(CException::GetTypeName(exception.GetType()));
            } catch (const std::exception& exception) {
                expected = exception.what();
            }
            std::string actual = "nothing";
            try {
                Decode(wanted);
            } catch (const CException& exception) {
                EXPECT_EQ(Narrow(exception.GetReason()), "on request");
                actual = Narrow(CException::GetTypeName(exception.GetType()));
            } catch (const std::exception& exception) {
                actual = exception.what();
            }
            EXPECT_EQ(actual, expected);
            EXPECT_EQ(CLiveObject::GetCount(), before_ + 1);
            EXPECT_EQ(ReferencesOf(source_.Get()), 1);
        }
    }
};

TEST_P(DecoderSearchPassesOn, OutOfConnect) {
    RegisterChain(2);
    Register(2, {.accepts = TestFormat(3), .produces = TestFormat(4), .onConnect = [](IInputStream* stream) {
                     if (stream->GetFormat().id == TestFormat(3)) GetParam().raise();
                 }});
    Register(3, {.accepts = TestFormat(3), .produces = TestFormat(9)});
    ExpectPassesOn();
    EXPECT_EQ(decoders_.CountEvents("connect 1 to 0"), 2U);
    EXPECT_EQ(decoders_.CountEvents("connect 3 to 1"), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DecoderSearchPassesOn,
    testing::Values(TFailureRow{"Generic",
                                [] {
                                    throw CException(kOnRequest.method, kOnRequest.file, kOnRequest.line,
                                                     kOnRequest.reason, EXCEPTION_TYPE_GENERIC);
                                }},
                    TFailureRow{"InvalidState", [] { Raise<CInvalidStateException>(kOnRequest); }},
                    TFailureRow{"NotSupported", [] { Raise<COperationNotSupportedException>(kOnRequest); }},
                    TFailureRow{"FileAccess", [] { Raise<CFileAccessException>(kOnRequest); }},
                    TFailureRow{"ClassNotFound", [] { Raise<CClassNotFoundException>(kOnRequest); }},
                    TFailureRow{"DataNotSupported", [] { Raise<CDataNotSupportedException>(kOnRequest); }},
                    TFailureRow{"Bug", [] { Raise<CBugException>(kOnRequest); }},
                    TFailureRow{"Foreign", [] { throw std::runtime_error("foreign"); }}),
    [](const auto& row) { return row.param.name; });

TEST_F(DecoderSearch, FailureOfAFormatIsNoRefusal) {
    // The type would be passed over, had Connect raised it.
    RegisterChain(2);
    CTestDecoders::plans[1].onGetFormat = [] { Raise<CDataFormatException>(kOnRequest); };
    ExpectRaises<CDataFormatException>(kOnRequest, [&] { Decode(TestFormat(9)); });
    EXPECT_EQ(decoders_.CountEvents("connect 1 to 0"), 1U);
    EXPECT_EQ(decoders_.CountEvents("destroy 1"), 1U);
}

TEST_F(DecoderSearch, FailureOfTheSourcesFormatPassesOn) {
    const auto filter = Make<CTestDecoder<0>>();
    CTestDecoders::plans[0].onGetFormat = [] { Raise<CIOException>(kOnRequest); };
    ExpectRaises<CIOException>(kOnRequest, [&] { store_.DecodeStream(filter.Get(), TestFormat(9)); });
    EXPECT_EQ(ReferencesOf(filter.Get()), 1);
}

std::function<IObject*()> factory;
IObject* CallFactory() {
    return factory();
}
constexpr CId kFactoryClass{0x7E57DEC3, 1, 2, 3};

TEST_F(DecoderSearch, FailureOfACreationPassesOnAndLeaksNothing) {
    RegisterChain(1);
    v.GetClassStore().RegisterClassVrl({kFactoryClass, VRL_L("test::CallFactory"), &CallFactory});
    store_.RegisterDecoder({kFactoryClass, TestFormat(1), TestFormat(2)});
    factory = []() -> IObject* { Raise<CInvalidStateException>(kOnRequest); };
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(TestFormat(2)); });
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(CId::Null()); });
    EXPECT_EQ(decoders_.events, (TCallLog{"create 0", "destroy 0", "create 0", "destroy 0"}));
    // This one says that there is no such class.
    factory = []() -> IObject* { Raise<CClassNotFoundException>(kOnRequest); };
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(0));
    factory = {};
}

TEST_F(DecoderSearch, FailureOfAReleasePassesOnAndLeaksNothing) {
    CTestListener listener([](IObject*) { Raise<CInvalidStateException>(kOnRequest); });
    RegisterChain(1);
    v.GetClassStore().RegisterClassVrl({kFactoryClass, VRL_L("test::CallFactory"), &CallFactory});
    store_.RegisterDecoder({kFactoryClass, TestFormat(50), TestFormat(51)});
    Register(2, {.accepts = TestFormat(50), .produces = TestFormat(51)});
    CTestDecoders::plans[1] = {.accepts = TestFormat(50), .produces = TestFormat(51)};
    factory = [&listener] {
        IObject* const object = NewObject<CTestDecoder<1>>();
        object->AddListener(&listener);
        return object;
    };
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(TestFormat(2)); });
    EXPECT_EQ(listener.GetCalls(), 1);
    for (const char* const event : {"destroy 0", "destroy 1", "destroy 2"}) {
        EXPECT_EQ(decoders_.CountEvents(event), 1U) << event;
    }
    // While another exception is on its way, that one goes on.
    CTestDecoders::plans[0].onConnect = [](IInputStream*) { throw std::runtime_error("first"); };
    EXPECT_THROW(Decode(TestFormat(2)), std::runtime_error);
    EXPECT_EQ(listener.GetCalls(), 2);
    factory = {};
}

/// Says that it is connected to a stream which nobody else holds and whose end raises.
class CDecoderOfDyingStreams : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId = kFactoryClass;
    static inline IObjectListener* listener = nullptr;

    IInputStream* GetInputStream() override {
        auto stream = Make<CMemoryInputStream>();
        stream->AddListener(listener);
        return stream.Detach();
    }
};

/// Decodes while another exception is on its way, and keeps what that raises.
class CDecodeAtTheEnd {
public:
    CDecodeAtTheEnd(std::function<void()> decode, bool& hasRaised) : decode_(decode), hasRaised_(hasRaised) {}
    CDecodeAtTheEnd(const CDecodeAtTheEnd&) = delete;
    CDecodeAtTheEnd& operator=(const CDecodeAtTheEnd&) = delete;
    ~CDecodeAtTheEnd() {
        try {
            decode_();
        } catch (const CInvalidStateException&) {
            hasRaised_ = true;
        }
    }

private:
    std::function<void()> decode_;
    bool& hasRaised_;
};

TEST_F(DecoderSearch, FailureOfAStreamsEndPassesOnAlsoWhileAnotherIsOnItsWay) {
    CTestListener listener([](IObject*) { Raise<CInvalidStateException>(kOnRequest); });
    CDecoderOfDyingStreams::listener = &listener;
    v.GetClassStore().RegisterClassVrl(
        {kFactoryClass, VRL_L("test::CDecoderOfDyingStreams"), &NewObject<CDecoderOfDyingStreams>});
    store_.RegisterDecoder({kFactoryClass, TestFormat(1), TestFormat(2)});
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(TestFormat(2)); });
    bool hasRaised = false;
    try {
        const CDecodeAtTheEnd atTheEnd([&] { Decode(TestFormat(2)); }, hasRaised);
        throw std::runtime_error("first");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(hasRaised);
}

TEST_F(DecoderSearch, DecoderThatRefusesConnectedIsNotTriedAgain) {
    Register(0, {.accepts = CId::Null(), .produces = TestFormat(3), .refusesConnected = true});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    EXPECT_EQ(Decode(TestFormat(2))->GetClassId(), TestDecoderId(1));
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(1));
    EXPECT_EQ(decoders_.CountEvents("refuse 0"), 2U);
}

TEST_F(DecoderSearch, DecodersThatHideTheirStreamEndTheSearch) {
    for (std::size_t i = 0; i < 6; ++i) {
        Register(i, {.accepts = CId::Null(), .produces = TestFormat(5), .hidesStream = true});
    }
    EXPECT_EQ(Decode(TestFormat(5))->GetClassId(), TestDecoderId(0));
    EXPECT_EQ(Decode(CId::Null())->GetClassId(), TestDecoderId(5));
    decoders_.events.clear();
    ExpectNoChain(TestFormat(9));
    // Creation, one connection and destruction of each.
    EXPECT_EQ(decoders_.events.size(), 18U);
}

TEST_F(DecoderSearch, FactoryMayHandOutAConnectedDecoder) {
    const auto other = Make<CMemoryInputStream>();
    v.GetClassStore().RegisterClassVrl({kFactoryClass, VRL_L("test::CallFactory"), &CallFactory});
    store_.RegisterDecoder({kFactoryClass, TestFormat(1), TestFormat(2)});
    CTestDecoders::plans[0] = {.accepts = CId::Null(), .produces = TestFormat(2)};
    factory = [&other] {
        auto decoder = Make<CTestDecoder<0>>();
        decoder->Connect(other.Get());
        return decoder.Detach();
    };
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Decode(CId::Null()).Get(), source_.Get());
    EXPECT_EQ(ReferencesOf(other.Get()), 1);
    factory = {};
}

} // namespace
} // namespace vorlund::test
