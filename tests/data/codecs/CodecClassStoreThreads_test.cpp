// The end of a codec class store while another thread is inside.
#include "support/Actor.h"
#include "support/Allocations.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/Latch.h"
#include "support/LibraryScope.h"
#include "support/TestDecoders.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <chrono>

namespace vorlund::test {
namespace {

void RegisterOne(CCodecClassStore& store) {
    store.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
}

/// How many records a new store takes before one makes it ask for memory, which it does inside its lock.
unsigned int CountRecordsWithoutMemory() {
    CCodecClassStore store;
    store.Init();
    unsigned int records = 0;
    for (const CAllocationCount count; RegisterOne(store), count.Get() == 0;) ++records;
    store.Close();
    return records;
}

TEST(CodecClassStoreThreads, CloseWaitsForARegistration) {
    const CLibraryScope library;
    const unsigned int records = CountRecordsWithoutMemory();
    CCodecClassStore store;
    store.Init();
    for (unsigned int i = 0; i < records; ++i) RegisterOne(store);
    CLatch inside(1);
    CLatch mayGo(1);
    CActor registrar;
    CActor closer;
    registrar.Start([&] {
        const CAllocationStep step([&] {
            inside.CountDown();
            mayGo.Wait();
        });
        RegisterOne(store);
    });
    inside.Wait();
    closer.Start([&] { store.Close(); });
    EXPECT_TRUE(closer.StaysBusy());
    mayGo.CountDown();
    EXPECT_TRUE(closer.Finishes());
    EXPECT_TRUE(registrar.Finishes());
}

/// A registration that stays inside the lock until it may go.
class CSlowRegistration {
public:
    explicit CSlowRegistration(CCodecClassStore& store) {
        const unsigned int records = CountRecordsWithoutMemory();
        for (unsigned int i = 0; i < records; ++i) RegisterOne(store);
        registrar_.Start([&] {
            const CAllocationStep step([&] {
                isInside_.CountDown();
                mayGo_.Wait();
            });
            RegisterOne(store);
        });
        isInside_.Wait();
    }
    void Finish() {
        mayGo_.CountDown();
        EXPECT_TRUE(registrar_.Finishes());
    }

private:
    CLatch isInside_{1};
    CLatch mayGo_{1};
    CActor registrar_;
};

constexpr TFailure kRegisterClosed{VRL_L("vorlund::CCodecClassStore::RegisterDecoder"),
                                   codecstorefailures::kCodecStoreFile, 91, VRL_L("Not initialized")};

TEST(CodecClassStoreThreads, CloseTurnsAwayThreadsThatWaitAndReportsWhoTakesTooLong) {
    const CLibraryScope library;
    CCodecClassStore store;
    store.Init();
    CSlowRegistration slow(store);
    CActor reader, registrar, enumerator, closer;
    reader.Start([&] {
        ExpectRaises<CBugException>(codecstorefailures::kGetDecoderClosed,
                                    [&] { store.GetDecoderClassInfo(TestFormat(1), TestFormat(2)); });
    });
    EXPECT_TRUE(reader.StaysBusy());
    registrar.Start([&] { ExpectRaises<CBugException>(kRegisterClosed, [&] { RegisterOne(store); }); });
    EXPECT_TRUE(registrar.StaysBusy());
    enumerator.Start(
        [&] { EXPECT_FALSE(CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateDecoders())->HasNext()); });
    EXPECT_TRUE(enumerator.StaysBusy());

    const CDebugRecorder recorder;
    const auto start = std::chrono::steady_clock::now();
    closer.Start([&] { store.Close(); });
    EXPECT_TRUE(reader.Finishes());
    EXPECT_TRUE(registrar.Finishes());
    EXPECT_TRUE(enumerator.Finishes());
    EXPECT_TRUE(closer.StaysBusy());
    EXPECT_TRUE(closer.Finishes());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT).back(),
              "[vorlund::CCodecClassStore::Close] Still locked!");
    // It is closed, and its memory is left to the registration.
    store.Init();
    RegisterOne(store);
    slow.Finish();
    store.Close();
}

CLatch* isInDecoderFactory = nullptr;
CLatch* mayLeaveDecoderFactory = nullptr;

TEST(CodecClassStoreThreads, SearchGoesOnWithItsRecordsWhenTheStoreIsClosed) {
    const CLibraryScope library;
    constexpr CId kSlowClass{0x7E57C0DE, 1, 1, 1};
    CLatch isInside(1), mayLeave(1);
    isInDecoderFactory = &isInside;
    mayLeaveDecoderFactory = &mayLeave;
    v.GetClassStore().RegisterClassVrl({kSlowClass, VRL_L("test::CSlow"), []() -> IObject* {
                                            isInDecoderFactory->CountDown();
                                            mayLeaveDecoderFactory->Wait();
                                            return nullptr;
                                        }});
    CCodecClassStore store;
    store.Init();
    store.RegisterDecoder({kSlowClass, TestFormat(1), TestFormat(2)});
    // Read by the search after the slow factory.
    RegisterOne(store);
    const auto stream = CreateAs<IInputStream>(classid::CInputStream);
    CActor searcher;
    searcher.Start([&] {
        EXPECT_EQ(CRefPtr<IInputStream>::Adopt(store.DecodeStream(stream.Get(), CId::Null())).Get(),
                  stream.Get());
    });
    isInside.Wait();
    store.Close();
    mayLeave.CountDown();
    EXPECT_TRUE(searcher.Finishes());
}

} // namespace
} // namespace vorlund::test
