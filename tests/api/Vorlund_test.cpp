// The library object: the order of start-up and shut-down. What happens when nobody closes it is in
// Unload_test.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

std::size_t CountClasses(const CClassStore& store) {
    std::size_t count = 0;
    const auto classes = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateClasses());
    for (; classes->HasNext(); ++count) classes->GetNext()->Release();
    return count;
}

/// The first free serial number.
int NextNumber() {
    return CreateAs<IObject>(classid::CObject)->GetObjectNumber();
}

/// Leaves the library closed, whatever a test has done.
class Vorlund : public testing::Test {
protected:
    void TearDown() override { v.Close(); }
};

TEST_F(Vorlund, IsClosedAtFirst) {
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed,
                                [] { CreateAs<IObject>(classid::CObject); });
}

TEST_F(Vorlund, CloseWithoutInitDoesNothing) {
    const CDebugRecorder recorder;
    v.Close();
    v.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
    ExpectRaises<CBugException>(counterfailures::kCreateClosed,
                                [&] { v.GetObjectCounter().OnCreateObject({}); });
}

TEST_F(Vorlund, CloseWithoutInitLeavesStoresThatAreOpen) {
    // Only what Init has completed is closed.
    v.GetClassStore().Init();
    v.Close();
    v.GetClassStore().RegisterClassVrl({{1, 2, 3, 4}, VRL_L("test::CEarly"), &NewObject<CProbe>});
    EXPECT_EQ(Narrow(v.GetClassStore().GetClassInfo({1, 2, 3, 4})->name), "test::CEarly");
    v.GetClassStore().Close();
}

TEST_F(Vorlund, SecondCloseDoesNothing) {
    v.Init();
    v.Close();
    v.GetClassStore().Init();
    v.Close();
    ExpectRaises<CClassNotFoundException>(classstorefailures::kGetByIdNotFound, [&] {
        v.GetClassStore().GetClassInfo({1, 2, 3, 4});
    });
    v.GetClassStore().Close();
}

TEST_F(Vorlund, SecondInitDoesNothing) {
    v.Init();
    const std::size_t classes = CountClasses(v.GetClassStore());
    const int number = NextNumber();
    v.Init();
    EXPECT_EQ(CountClasses(v.GetClassStore()), classes);
    // The numbers go on: an enumerator, an object per class, and one more.
    EXPECT_EQ(NextNumber(), number + static_cast<int>(classes) + 2);
}

TEST_F(Vorlund, OneCloseIsEnoughForTwoInits) {
    v.Init();
    v.Init();
    v.Close();
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed,
                                [] { CreateAs<IObject>(classid::CObject); });
}

TEST_F(Vorlund, StartsAnewAfterAClose) {
    v.Init();
    const std::size_t classes = CountClasses(v.GetClassStore());
    v.GetClassStore().RegisterClassVrl({{1, 2, 3, 4}, VRL_L("test::CProbe"), &NewObject<CProbe>});
    for (int round = 0; round < 3; ++round) {
        v.Close();
        v.Init();
        EXPECT_EQ(NextNumber(), 1);
        EXPECT_EQ(CountClasses(v.GetClassStore()), classes);
        ExpectRaises<CClassNotFoundException>(classstorefailures::kGetByIdNotFound, [&] {
            v.GetClassStore().GetClassInfo({1, 2, 3, 4});
        });
    }
}

TEST_F(Vorlund, InitAndCloseReportNothing) {
    const CDebugRecorder recorder;
    v.Init();
    v.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(Vorlund, InitTakesNoNumberAndNeedsNone) {
    v.Init();
    EXPECT_EQ(NextNumber(), 1);
}

TEST_F(Vorlund, StoreThatIsOpenAlreadyKeepsWhatItHas) {
    // Registered before the library's own, so it wins.
    v.GetClassStore().Init();
    v.GetClassStore().RegisterClassVrl({classid::CObject, VRL_L("test::CReplacement"), &NewObject<CProbe>});
    v.Init();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetClassId(), CProbe::ClassId);
    EXPECT_NE(v.GetClassStore().GetClassInfo(VRL_L("vorlund::CObject")), nullptr);
    v.Close();
    ExpectRaises<CBugException>(classstorefailures::kGetByIdClosed,
                                [&] { v.GetClassStore().GetClassInfo(classid::CObject); });
}

TEST_F(Vorlund, StoreThatWasClosedMeanwhileIsNoObstacle) {
    v.Init();
    v.GetDeviceClassStore().Close();
    v.GetCodecClassStore().Close();
    v.GetClassStore().Close();
    v.GetObjectCounter().Close();
    const CDebugRecorder recorder;
    v.Close();
    v.Init();
    EXPECT_EQ(NextNumber(), 1);
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(Vorlund, EveryStoreIsClosed) {
    v.Init();
    v.Close();
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed,
                                [&] { v.GetObjectCounter().OnDestroyObject({}); });
    ExpectRaises<CBugException>(classstorefailures::kGetByIdClosed,
                                [&] { v.GetClassStore().GetClassInfo(classid::CObject); });
    ExpectRaises<CBugException>(codecstorefailures::kGetDecoderClosed,
                                [&] { v.GetCodecClassStore().GetDecoderClassInfo({}, {}); });
    ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                [&] { v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO); });
}

TEST_F(Vorlund, AnotherLibraryObjectHasStoresOfItsOwn) {
    v.Init();
    const CDebugRecorder recorder;
    {
        CVorlund unused;
        unused.Close();
        CVorlund own;
        own.Init();
        own.Init();
        own.GetClassStore().RegisterClassVrl({{1, 2, 3, 4}, VRL_L("test::CProbe"), &NewObject<CProbe>});
        EXPECT_EQ(CountClasses(own.GetClassStore()), CountClasses(v.GetClassStore()) + 1);
        EXPECT_EQ(own.GetObjectCounter().OnCreateObject({}), 1);
        EXPECT_TRUE(recorder.GetEntries().empty());
        ExpectRaises<CClassNotFoundException>(classstorefailures::kGetByIdNotFound, [&] {
            v.GetClassStore().GetClassInfo({1, 2, 3, 4});
        });
        // Objects take their numbers from the one library object, whoever makes them.
        const int number = NextNumber();
        EXPECT_EQ(
            CRefPtr<IObject>::Adopt(own.GetClassStore().CreateObject(classid::CObject))->GetObjectNumber(),
            number + 1);
        own.Close();
        EXPECT_EQ(NextNumber(), number + 2);
    }
}

// Objects that outlive the library.

/// Lets the library go while `object` lives, releases it, and expects one report per object that dies.
void ExpectLateEnd(IObject* object, std::size_t count) {
    v.Close();
    const CDebugRecorder recorder;
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { object->Release(); });
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT).size(), count);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX).size(), count);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Vorlund, LateObjectRaises) {
    v.Init();
    ExpectLateEnd(v.GetClassStore().CreateObject(classid::CObject), 1);
}

TEST_F(Vorlund, LateObjectLivesOnUntilItsLastRelease) {
    v.Init();
    IObject* const object = NewObject<CProbe>();
    v.Close();
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_EQ(object->QueryInterface(IObject::InterfaceId), object);
    EXPECT_EQ(object->Release(), 1);
    v.Init();
    ExpectLateEnd(object, 1);
}

TEST_F(Vorlund, LateListTakesItsMembersAlong) {
    v.Init();
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 3; ++i) list->AddObject(NewProbe().Get());
    ExpectLateEnd(list.Detach(), 4);
}

TEST_F(Vorlund, LateEnumeratorTakesItsObjectsAlong) {
    v.Init();
    auto enumerator = CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
    for (int i = 0; i < 3; ++i) enumerator->Push(NewProbe().Get());
    ExpectLateEnd(enumerator.Detach(), 4);
}

TEST_F(Vorlund, LateTreeOfListsGoesWhole) {
    v.Init();
    auto root = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 3; ++i) {
        const auto branch = CreateAs<IObjectList>(classid::CObjectList);
        for (int leaf = 0; leaf < 3; ++leaf) branch->AddObject(NewProbe().Get());
        root->AddObject(branch.Get());
    }
    ExpectLateEnd(root.Detach(), 13);
}

TEST_F(Vorlund, LateFilterChainGoesWhole) {
    v.Init();
    auto stream = CreateAs<IInputStream>(classid::CInputStream);
    constexpr int kFilters = 9;
    for (int i = 0; i < kFilters; ++i) {
        const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
        filter->Connect(stream.Get());
        stream = CRefPtr<IInputStream>::Share(filter.Get());
    }
    ExpectLateEnd(stream.Detach(), kFilters + 1);
}

TEST_F(Vorlund, MembersThatOthersHoldSurviveALateEnd) {
    v.Init();
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    IObject* const member = NewObject<CProbe>();
    list->AddObject(member);
    v.Close();
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list.Reset(); });
    EXPECT_EQ(ReferencesOf(member), 1);
    v.Init();
    EXPECT_EQ(member->Release(), 0);
}

TEST_F(Vorlund, LateListIsEmptiedInSpiteOfTheFailures) {
    v.Init();
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 3; ++i) list->AddObject(NewProbe().Get());
    v.Close();
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list->RemoveObject(1u); });
    EXPECT_EQ(list->GetObjectCount(), 2u);
    EXPECT_EQ(CProbe::alive, 2);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list->RemoveAllObjects(); });
    EXPECT_EQ(list->GetObjectCount(), 0u);
    EXPECT_EQ(CProbe::alive, 0);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list.Reset(); });
}

TEST_F(Vorlund, ServicesOfObjectsAreItsStores) {
    EXPECT_EQ(&services::ClassStore(), &v.GetClassStore());
    EXPECT_EQ(&services::CodecClassStore(), &v.GetCodecClassStore());
}

} // namespace
} // namespace vorlund::test
