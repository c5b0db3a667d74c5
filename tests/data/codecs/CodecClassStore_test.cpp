// The codec class store: life cycle, registration, lookups, creation and enumeration. The search for chains
// is tested in DecoderSearch_test.cpp, the decoding of files in DecodeFile_test.cpp.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/TestDecoders.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

static_assert(std::is_trivially_copyable_v<TDecoderClassInfo> && sizeof(TDecoderClassInfo) == 48);
static_assert(std::is_trivially_copyable_v<TEncoderClassInfo> && sizeof(TEncoderClassInfo) == 48);
static_assert(TDecoderClassInfo(CId(1, 0, 0, 0), CId(2, 0, 0, 0), CId(3, 0, 0, 0)).outputFormatId ==
              CId(3, 0, 0, 0));
static_assert(OTHER_MEDIA_FORMAT_ID == CId(0x21089FFF, 0x06984E6C, 0x975010E2, 0x0E01371C));

constexpr const wchar* kFile = codecstorefailures::kCodecStoreFile;
constexpr CId kUnknownClass{0x7E57DEC1, 1, 2, 3};

constexpr TFailure Failure(const wchar* method, int line, const wchar* reason) {
    return {method, kFile, line, reason};
}

constexpr TFailure kNoDecoderInfo =
    Failure(VRL_L("vorlund::CCodecClassStore::GetDecoderClassInfo"), 131, VRL_L(""));
constexpr TFailure kNoEncoderInfo =
    Failure(VRL_L("vorlund::CCodecClassStore::GetEncoderClassInfo"), 146, VRL_L(""));
constexpr TFailure kNoDecoder = Failure(VRL_L("vorlund::CCodecClassStore::CreateDecoder"), 162, VRL_L(""));
constexpr TFailure kNoEncoder = Failure(VRL_L("vorlund::CCodecClassStore::CreateEncoder"), 178, VRL_L(""));

class CodecClassStore : public testing::Test {
protected:
    CodecClassStore() { store_.Init(); }
    ~CodecClassStore() noexcept override { store_.Close(); }

    template <class TInfo> std::vector<const TInfo*> Enumerate(IObjectEnumerator* enumerator) {
        const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
        std::vector<const TInfo*> records;
        while (owner->HasNext()) {
            const auto item = CRefPtr<IObject>::Adopt(owner->GetNext()).Query<IPtrObject>();
            records.push_back(static_cast<const TInfo*>(item->GetPtr()));
        }
        return records;
    }
    std::vector<const TDecoderClassInfo*> Decoders() {
        return Enumerate<TDecoderClassInfo>(store_.EnumerateDecoders());
    }
    std::vector<const TEncoderClassInfo*> Encoders() {
        return Enumerate<TEncoderClassInfo>(store_.EnumerateEncoders());
    }

    CLibraryScope library_;
    CCodecClassStore store_;
};

// Life cycle.

struct TClosedRow {
    const char* name;
    TFailure failure;
    std::function<void(CCodecClassStore&)> call;
};
class CodecClassStoreClosed : public testing::TestWithParam<TClosedRow> {};

TEST_P(CodecClassStoreClosed, Raises) {
    const CLibraryScope library;
    CCodecClassStore store;
    ExpectRaises<CBugException>(GetParam().failure, [&] { GetParam().call(store); });
    store.Init();
    store.Close();
    ExpectRaises<CBugException>(GetParam().failure, [&] { GetParam().call(store); });
}

constexpr const wchar* kNotInitialized = VRL_L("Not initialized");
INSTANTIATE_TEST_SUITE_P(
    Rows, CodecClassStoreClosed,
    testing::Values(
        TClosedRow{"RegisterDecoder",
                   Failure(VRL_L("vorlund::CCodecClassStore::RegisterDecoder"), 91, kNotInitialized),
                   // Before the class is looked at.
                   [](CCodecClassStore& store) {
                       store.RegisterDecoder({kUnknownClass, {}, {}});
                   }},
        TClosedRow{"RegisterEncoder",
                   Failure(VRL_L("vorlund::CCodecClassStore::RegisterEncoder"), 106, kNotInitialized),
                   [](CCodecClassStore& store) {
                       store.RegisterEncoder({kUnknownClass, {}, {}});
                   }},
        TClosedRow{"GetDecoderClassInfo", codecstorefailures::kGetDecoderClosed,
                   [](CCodecClassStore& store) { store.GetDecoderClassInfo({}, {}); }},
        TClosedRow{"GetEncoderClassInfo",
                   Failure(VRL_L("vorlund::CCodecClassStore::GetEncoderClassInfo"), 136, kNotInitialized),
                   [](CCodecClassStore& store) { store.GetEncoderClassInfo({}, {}); }},
        TClosedRow{"CreateDecoder",
                   Failure(VRL_L("vorlund::CCodecClassStore::CreateDecoder"), 151, kNotInitialized),
                   [](CCodecClassStore& store) { store.CreateDecoder({}, {}); }},
        TClosedRow{"CreateEncoder",
                   Failure(VRL_L("vorlund::CCodecClassStore::CreateEncoder"), 167, kNotInitialized),
                   [](CCodecClassStore& store) { store.CreateEncoder({}, {}); }},
        TClosedRow{"DecodeStream",
                   Failure(VRL_L("vorlund::CCodecClassStore::DecodeStream"), 311, kNotInitialized),
                   // Before the stream is looked at.
                   [](CCodecClassStore& store) { store.DecodeStream(nullptr, {}); }},
        TClosedRow{"DecodeFile",
                   Failure(VRL_L("vorlund::CCodecClassStore::DecodeFile"), 360, kNotInitialized),
                   // Before the file is looked at.
                   [](CCodecClassStore& store) { store.DecodeFile(VRL_L("no/such/file"), {}); }}),
    [](const auto& row) { return row.param.name; });

TEST_F(CodecClassStore, SecondInitKeepsTheRecords) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.Init();
    EXPECT_EQ(Decoders().size(), 1U);
    EXPECT_EQ(Encoders().size(), 1U);
}

TEST_F(CodecClassStore, OpensEmptyAfterClose) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.Close();
    store_.Close();
    store_.Init();
    EXPECT_TRUE(Decoders().empty());
    EXPECT_TRUE(Encoders().empty());
    ExpectRaises<CClassNotFoundException>(kNoDecoderInfo,
                                          [&] { store_.GetDecoderClassInfo(TestFormat(1), TestFormat(2)); });
}

TEST_F(CodecClassStore, DestructionWhileOpenIsABug) {
    ExpectRaises<CBugException>(
        Failure(VRL_L("vorlund::CCodecClassStore::~CCodecClassStore"), 58, VRL_L("Not closed")), [] {
            CCodecClassStore store;
            store.Init();
            store.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
        });
    // The lists are freed all the same: nothing leaks here.
    CCodecClassStore closed;
    closed.Init();
    closed.Close();
}

TEST_F(CodecClassStore, LibraryKnowsTheWavDecoder) {
    const TDecoderClassInfo* const info =
        v.GetCodecClassStore().GetDecoderClassInfo(CId::Null(), TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(info->classId, classid::CWavDecoder);
    EXPECT_EQ(info->inputFormatId, CId::Null());
    EXPECT_EQ(info->outputFormatId, CId(0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF));
    EXPECT_EQ(Enumerate<TDecoderClassInfo>(v.GetCodecClassStore().EnumerateDecoders()),
              (std::vector<const TDecoderClassInfo*>{info}));
    EXPECT_TRUE(Enumerate<TEncoderClassInfo>(v.GetCodecClassStore().EnumerateEncoders()).empty());
}

// Registration.

TEST_F(CodecClassStore, ClassesMustBeRegisteredFirst) {
    ExpectRaises<CBugException>(Failure(VRL_L("vorlund::CCodecClassStore::RegisterDecoder"), 97,
                                        VRL_L("Class must be registered first")),
                                [&] {
                                    store_.RegisterDecoder({kUnknownClass, TestFormat(1), TestFormat(2)});
                                });
    ExpectRaises<CBugException>(Failure(VRL_L("vorlund::CCodecClassStore::RegisterEncoder"), 112,
                                        VRL_L("Class must be registered first")),
                                [&] {
                                    store_.RegisterEncoder({kUnknownClass, TestFormat(1), TestFormat(2)});
                                });
    EXPECT_TRUE(Decoders().empty());
    EXPECT_TRUE(Encoders().empty());
}

TEST_F(CodecClassStore, OtherFailuresOfTheClassStorePassOn) {
    constexpr const TFailure& failure = classstorefailures::kGetByIdClosed;
    v.Close();
    ExpectRaises<CBugException>(failure, [&] { store_.RegisterDecoder({classid::CObject, {}, {}}); });
    ExpectRaises<CBugException>(failure, [&] { store_.RegisterEncoder({classid::CObject, {}, {}}); });
    v.Init();
    EXPECT_TRUE(Decoders().empty());
    EXPECT_TRUE(Encoders().empty());
}

TEST_F(CodecClassStore, RecordsAreCopiesThatStayWhereTheyAre) {
    TDecoderClassInfo decoder{classid::CObject, TestFormat(1), TestFormat(2)};
    store_.RegisterDecoder(decoder);
    const TDecoderClassInfo* const first = store_.GetDecoderClassInfo(TestFormat(1), TestFormat(2));
    EXPECT_NE(first, &decoder);
    decoder = {};
    for (unsigned int i = 0; i < 1000; ++i)
        store_.RegisterDecoder({classid::CPtrObject, TestFormat(i), TestFormat(3)});
    EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(1), TestFormat(2)), first);
    EXPECT_EQ(first->classId, classid::CObject);
    EXPECT_EQ(first->inputFormatId, TestFormat(1));
    EXPECT_EQ(first->outputFormatId, TestFormat(2));
}

// Lookups.

TEST_F(CodecClassStore, FirstRecordOfAPairWins) {
    store_.RegisterDecoder({classid::CPtrObject, TestFormat(1), TestFormat(2)});
    store_.RegisterDecoder({classid::CStringObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CStringObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CPtrObject, TestFormat(1), TestFormat(2)});
    EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(1), TestFormat(2))->classId, classid::CPtrObject);
    EXPECT_EQ(store_.GetEncoderClassInfo(TestFormat(1), TestFormat(2))->classId, classid::CStringObject);
    EXPECT_EQ(Decoders().size(), 2U);
    EXPECT_EQ(Encoders().size(), 2U);
    const auto decoder = CRefPtr<IObject>::Adopt(store_.CreateDecoder(TestFormat(1), TestFormat(2)));
    EXPECT_EQ(decoder->GetClassId(), classid::CPtrObject);
    EXPECT_EQ(ReferencesOf(decoder.Get()), 1);
    const auto encoder = CRefPtr<IObject>::Adopt(store_.CreateEncoder(TestFormat(1), TestFormat(2)));
    EXPECT_EQ(encoder->GetClassId(), classid::CStringObject);
    EXPECT_EQ(ReferencesOf(encoder.Get()), 1);
}

TEST_F(CodecClassStore, PairsMatchExactly) {
    store_.RegisterDecoder({classid::CObject, CId::Null(), TestFormat(2)});
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(3)});
    store_.RegisterDecoder({classid::CObject, TestFormat(4), CId::Null()});
    EXPECT_EQ(store_.GetDecoderClassInfo(CId::Null(), TestFormat(2)), Decoders()[0]);
    EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(1), TestFormat(3)), Decoders()[1]);
    EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(4), CId::Null()), Decoders()[2]);
    const std::pair<CId, CId> absent[] = {// A record that takes any input is no answer to a question for a
                                          // certain one, nor the other way round.
                                          {TestFormat(1), TestFormat(2)},
                                          {CId::Null(), TestFormat(3)},
                                          {TestFormat(3), TestFormat(1)},
                                          {TestFormat(4), TestFormat(3)},
                                          {CId::Null(), CId::Null()}};
    for (const auto& [input, output] : absent) {
        ExpectRaises<CClassNotFoundException>(kNoDecoderInfo,
                                              [&] { store_.GetDecoderClassInfo(input, output); });
        ExpectRaises<CClassNotFoundException>(kNoDecoder, [&] { store_.CreateDecoder(input, output); });
    }
}

TEST_F(CodecClassStore, DecodersAndEncodersAreTwoLists) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CObject, TestFormat(2), TestFormat(1)});
    ExpectRaises<CClassNotFoundException>(kNoEncoderInfo,
                                          [&] { store_.GetEncoderClassInfo(TestFormat(1), TestFormat(2)); });
    ExpectRaises<CClassNotFoundException>(kNoDecoderInfo,
                                          [&] { store_.GetDecoderClassInfo(TestFormat(2), TestFormat(1)); });
    EXPECT_EQ(store_.GetEncoderClassInfo(TestFormat(2), TestFormat(1))->classId, classid::CObject);
}

TEST_F(CodecClassStore, AbsentPairsHaveAnEmptyReason) {
    const CId input = TestFormat(1);
    const CId output = TestFormat(2);
    ExpectRaises<CClassNotFoundException>(kNoDecoderInfo, [&] { store_.GetDecoderClassInfo(input, output); });
    ExpectRaises<CClassNotFoundException>(kNoEncoderInfo, [&] { store_.GetEncoderClassInfo(input, output); });
    ExpectRaises<CClassNotFoundException>(kNoDecoder, [&] { store_.CreateDecoder(input, output); });
    ExpectRaises<CClassNotFoundException>(kNoEncoder, [&] { store_.CreateEncoder(input, output); });
}

TEST_F(CodecClassStore, CreationRaisesWhatTheClassStoreRaises) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CObject, TestFormat(1), TestFormat(2)});
    v.GetClassStore().Clear();
    constexpr const TFailure& failure = classstorefailures::kCreateByIdNotFound;
    ExpectRaises<CClassNotFoundException>(failure,
                                          [&] { store_.CreateDecoder(TestFormat(1), TestFormat(2)); });
    ExpectRaises<CClassNotFoundException>(failure,
                                          [&] { store_.CreateEncoder(TestFormat(1), TestFormat(2)); });
}

/// The store that the following factory closes on another thread, which waits for the store's lock.
CCodecClassStore* storeToClose = nullptr;

IObject* CloseStoreElsewhere() {
    std::thread([] { storeToClose->Close(); }).join();
    return NewObject<CMemoryInputStream>();
}

TEST_F(CodecClassStore, ObjectsAreCreatedAfterTheLockIsReleased) {
    storeToClose = &store_;
    v.GetClassStore().RegisterClassVrl(
        {kUnknownClass, VRL_L("test::CloseStoreElsewhere"), &CloseStoreElsewhere});
    store_.RegisterDecoder({kUnknownClass, TestFormat(1), TestFormat(2)});
    const auto decoder = CRefPtr<IObject>::Adopt(store_.CreateDecoder(TestFormat(1), TestFormat(2)));
    EXPECT_EQ(decoder->GetClassId(), CMemoryInputStream::ClassId);
    store_.Init();
    store_.RegisterEncoder({kUnknownClass, TestFormat(1), TestFormat(2)});
    const auto encoder = CRefPtr<IObject>::Adopt(store_.CreateEncoder(TestFormat(1), TestFormat(2)));
    EXPECT_EQ(encoder->GetClassId(), CMemoryInputStream::ClassId);
}

// Enumeration.

TEST_F(CodecClassStore, EnumeratesInTheOrderOfRegistration) {
    const CId classes[] = {classid::CPtrObject, classid::CObject, classid::CStringObject, classid::CObject};
    for (const CId& classId : classes) {
        store_.RegisterDecoder({classId, TestFormat(1), TestFormat(2)});
        store_.RegisterEncoder({classId, TestFormat(3), TestFormat(4)});
    }
    const auto decoders = Decoders();
    const auto encoders = Encoders();
    ASSERT_EQ(decoders.size(), std::size(classes));
    ASSERT_EQ(encoders.size(), std::size(classes));
    for (std::size_t i = 0; i < std::size(classes); ++i) {
        EXPECT_EQ(decoders[i]->classId, classes[i]);
        EXPECT_EQ(decoders[i]->inputFormatId, TestFormat(1));
        EXPECT_EQ(encoders[i]->classId, classes[i]);
        EXPECT_EQ(encoders[i]->inputFormatId, TestFormat(3));
    }
    // The store's own records.
    EXPECT_EQ(decoders[0], store_.GetDecoderClassInfo(TestFormat(1), TestFormat(2)));
    EXPECT_EQ(encoders[0], store_.GetEncoderClassInfo(TestFormat(3), TestFormat(4)));
}

TEST_F(CodecClassStore, EnumeratorIsASnapshotOwnedByTheCaller) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateDecoders());
    EXPECT_EQ(ReferencesOf(enumerator.Get()), 1);
    EXPECT_EQ(enumerator->GetClassId(), classid::CPushObjectEnumerator);
    store_.RegisterDecoder({classid::CObject, TestFormat(3), TestFormat(4)});
    EXPECT_TRUE(enumerator->HasNext());
    const auto item = CRefPtr<IObject>::Adopt(enumerator->GetNext());
    EXPECT_EQ(item->GetClassId(), classid::CPtrObject);
    // The enumerator comes first, then one wrapper per record.
    EXPECT_EQ(item->GetObjectNumber(), enumerator->GetObjectNumber() + 1);
    EXPECT_FALSE(enumerator->HasNext());
    EXPECT_EQ(enumerator->GetNext(), nullptr);
}

TEST_F(CodecClassStore, ClosedStoreEnumeratesNothing) {
    store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.RegisterEncoder({classid::CObject, TestFormat(1), TestFormat(2)});
    store_.Close();
    EXPECT_TRUE(Decoders().empty());
    EXPECT_TRUE(Encoders().empty());
}

TEST_F(CodecClassStore, EnumerationNeedsTheLibrary) {
    v.Close();
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed, [&] { store_.EnumerateDecoders(); });
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed, [&] { store_.EnumerateEncoders(); });
    v.Init();
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(CodecClassStore, EnumeratorClassThatYieldsNoneIsABug) {
    const TFailure decoders = Failure(VRL_L("vorlund::CCodecClassStore::EnumerateDecoders"), 184,
                                      VRL_L("Cannot create enumerator"));
    const TFailure encoders = Failure(VRL_L("vorlund::CCodecClassStore::EnumerateEncoders"), 200,
                                      VRL_L("Cannot create enumerator"));
    store_.RegisterDecoder({classid::CObject, {}, {}});
    store_.RegisterEncoder({classid::CObject, {}, {}});
    const TClassInfo enumerator = *v.GetClassStore().GetClassInfo(classid::CPushObjectEnumerator);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CPushObjectEnumerator, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(decoders, [&] { store_.EnumerateDecoders(); });
    ExpectRaises<CBugException>(encoders, [&] { store_.EnumerateEncoders(); });
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(enumerator);
    v.GetClassStore().RegisterClassVrl({classid::CPtrObject, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(decoders, [&] { store_.EnumerateDecoders(); });
    ExpectRaises<CBugException>(encoders, [&] { store_.EnumerateEncoders(); });
}

// Encoding.

TEST_F(CodecClassStore, EncodingGivesNull) {
    TCallLog log;
    const auto stream = Make<CMemoryOutputStream>();
    stream->log = &log;
    const TDataFormat& format = GetEmptyFormat();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(store_.EncodeStream(nullptr, nullptr, nullptr), nullptr);
        EXPECT_EQ(store_.EncodeStream(stream.Get(), &format, &format), nullptr);
        EXPECT_EQ(store_.EncodeFile(nullptr, nullptr, nullptr), nullptr);
        EXPECT_EQ(store_.EncodeFile(VRL_L("no/such/file"), &format, &format), nullptr);
        // Closed or not.
        store_.Close();
    }
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

// Threads.

TEST_F(CodecClassStore, RegistrationsAndLookupsComeFromAnyThread) {
    constexpr unsigned int kRecords = 300;
    constexpr unsigned int kWriters = 2;
    std::atomic<unsigned int> done{0};
    std::vector<std::thread> threads;
    for (unsigned int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([&, writer] {
            for (unsigned int i = 0; i < kRecords; ++i) {
                store_.RegisterDecoder({classid::CObject, TestFormat(writer), TestFormat(i)});
                store_.RegisterEncoder({classid::CObject, TestFormat(i), TestFormat(writer)});
                // What this thread has registered is there.
                EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(writer), TestFormat(i))->outputFormatId,
                          TestFormat(i));
            }
            ++done;
        });
    }
    store_.RegisterDecoder({classid::CPtrObject, TestFormat(99), TestFormat(99)});
    for (int reader = 0; reader < 2; ++reader) {
        threads.emplace_back([&] {
            while (done < kWriters) {
                EXPECT_EQ(store_.GetDecoderClassInfo(TestFormat(99), TestFormat(99))->classId,
                          classid::CPtrObject);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(Decoders().size(), kWriters * kRecords + 1);
    for (unsigned int writer = 0; writer < kWriters; ++writer) {
        for (unsigned int i = 0; i < kRecords; ++i) {
            EXPECT_EQ(store_.GetEncoderClassInfo(TestFormat(i), TestFormat(writer))->inputFormatId,
                      TestFormat(i));
        }
    }
}

} // namespace
} // namespace vorlund::test
