// The end of the library from whatever state it is in.
#include "api/ClassStoreTest.h"

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace vorlund::test {
namespace {

void ExpectClosed(CVorlund& library) {
    ExpectRaises<CBugException>(counterfailures::kCreateClosed,
                                [&] { library.GetObjectCounter().OnCreateObject({}); });
    ExpectRaises<CBugException>(kGetByIdClosed, [&] { library.GetClassStore().GetClassInfo(kFirstId); });
    ExpectRaises<CBugException>(codecstorefailures::kGetDecoderClosed,
                                [&] { library.GetCodecClassStore().GetDecoderClassInfo({}, {}); });
    ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                [&] { library.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO); });
}

TEST(VorlundAbandon, ClosesWhatAnInitHasOpened) {
    v.Init();
    const CDebugRecorder recorder;
    v.Abandon();
    v.Abandon();
    v.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
    ExpectClosed(v);
    v.Init();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), 1);
    v.Close();
    v.Abandon();
}

/// One thing that a start which did not come to its end has left open.
struct TPartRow {
    const char* name;
    void (*open)(CVorlund& library);
};
class VorlundAbandonParts : public testing::TestWithParam<TPartRow> {
    // Whose class store a further library object asks.
    CLibraryScope library_;
};

TEST_P(VorlundAbandonParts, AreClosed) {
    const CDebugRecorder recorder;
    {
        CVorlund library;
        GetParam().open(library);
        library.Abandon();
        // Its end raises nothing.
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
    CVorlund library;
    GetParam().open(library);
    library.Abandon();
    ExpectClosed(library);
    // And it can be started as ever.
    library.Init();
    EXPECT_EQ(library.GetObjectCounter().OnCreateObject({}), 1);
    library.Close();
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VorlundAbandonParts,
    testing::Values(TPartRow{"Nothing", [](CVorlund&) {}},
                    TPartRow{"ClassStore", [](CVorlund& library) { library.GetClassStore().Init(); }},
                    TPartRow{"CodecStore", [](CVorlund& library) { library.GetCodecClassStore().Init(); }},
                    TPartRow{"DeviceStore", [](CVorlund& library) { library.GetDeviceClassStore().Init(); }},
                    TPartRow{"Counter", [](CVorlund& library) { library.GetObjectCounter().Init(); }},
                    TPartRow{"AllButTheFlag",
                             [](CVorlund& library) {
                                 library.GetClassStore().Init();
                                 library.GetCodecClassStore().Init();
                                 library.GetDeviceClassStore().Init();
                                 library.GetObjectCounter().Init();
                             }},
                    TPartRow{"AllButTheCounter",
                             [](CVorlund& library) {
                                 library.Init();
                                 library.GetObjectCounter().Close();
                             }}),
    [](const auto& row) { return row.param.name; });

[[noreturn]] IObject* Refuse() {
    throw std::runtime_error("factory");
}

/// Leaves both locks of the library with the calling thread.
void LeaveBothLocked() {
    ExpectRaises<CClassNotFoundException>(devicestorefailures::kNoClass,
                                          [] { v.GetClassStore().CreateObject(classid::CVideoDevice); });
}

TEST(VorlundAbandon, StoresThatAnEndedThreadHasLeftLockedAreNoObstacle) {
    v.Init();
    std::thread(&LeaveBothLocked).join();
    v.Abandon();
    ExpectClosed(v);
    v.Init();
    EXPECT_TRUE(CreateAs<IObject>(classid::CObject));
    v.Close();
}

TEST(VorlundAbandon, CloseLeavesTheRestOpenAndAbandonClosesIt) {
    v.Init();
    std::thread(&LeaveBothLocked).join();
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [] { v.Close(); });
    EXPECT_THROW(v.GetCodecClassStore().GetDecoderClassInfo({}, {}), CClassNotFoundException);
    v.Abandon();
    ExpectClosed(v);
}

TEST(VorlundAbandonLocks, ThreadGivesBothBack) {
    const CLibraryScope library;
    v.GetClassStore().RegisterClassVrl({kFirstId, kFirstName, &Refuse});
    CActor owner, other;
    owner.Do([] {
        LeaveBothLocked();
        EXPECT_THROW(v.GetClassStore().CreateObject(kFirstId), std::runtime_error);
    });
    EXPECT_EQ(v.GiveBackLocks(), 0);
    other.Start([] { v.GetDeviceClassStore().RegisterDevice({classid::CDevice, DEVICE_TYPE_AUDIO}); });
    EXPECT_TRUE(other.StaysBusy());
    owner.Do([] { EXPECT_EQ(v.GiveBackLocks(), 3); });
    EXPECT_TRUE(other.Finishes());
    EXPECT_TRUE(CreateAs<IObject>(classid::CObject));
}

} // namespace
} // namespace vorlund::test
