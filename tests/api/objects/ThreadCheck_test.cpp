// What a build with VORLUND_CHECK_THREADS says of objects that several threads count, and that no other build
// says anything.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

#ifdef VORLUND_CHECK_THREADS
constexpr bool kIsChecked = true;
#else
constexpr bool kIsChecked = false;
#endif

class ThreadCheck : public testing::Test {
protected:
    /// Runs `act` on another thread, to its end.
    template <class TAct> static void OnOtherThread(TAct act) { std::thread(act).join(); }

    void ExpectNothing() { EXPECT_EQ(recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT), std::vector<std::string>{}); }
    /// One message in a checked build, about the object of that number with so many references.
    void ExpectReport(int number, int references) {
        const std::string begin = "Object " + std::to_string(number) + " of class ";
        const std::string middle = " with " + std::to_string(references) + " references: counted by thread ";
        const auto texts = recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT);
        if (!kIsChecked) {
            EXPECT_EQ(texts, std::vector<std::string>{});
            return;
        }
        ASSERT_EQ(texts.size(), 1u);
        EXPECT_EQ(texts[0].compare(0, begin.size(), begin), 0) << texts[0];
        EXPECT_NE(texts[0].find(middle), std::string::npos) << texts[0];
        recorder_.Clear();
    }

    CLibraryScope library_;
    CDebugRecorder recorder_;
};

TEST_F(ThreadCheck, OneThreadMayCountAsItLikes) {
    const auto object = CreateAs<IObject>(classid::CObject);
    const auto second = object;
    ExpectNothing();
}

TEST_F(ThreadCheck, ASecondReferenceOfAnotherThreadIsReported) {
    const auto object = CreateAs<IObject>(classid::CObject);
    CRefPtr<IObject> second = object;
    OnOtherThread([&] { second.Reset(); });
    ExpectReport(object->GetObjectNumber(), 2);
}

TEST_F(ThreadCheck, AReferenceThatAnotherThreadTookIsReportedWhenItsOwnerCounts) {
    const auto object = CreateAs<IObject>(classid::CObject);
    CRefPtr<IObject> theirs;
    OnOtherThread([&] { theirs = object; });
    ExpectNothing();
    theirs.Reset();
    ExpectReport(object->GetObjectNumber(), 2);
}

TEST_F(ThreadCheck, AnObjectChangesItsThreadOnce) {
    const auto object = CreateAs<IObject>(classid::CObject);
    const CRefPtr<IObject> second = object;
    OnOtherThread([&] {
        object->AddRef();
        object->Release();
    });
    ExpectReport(object->GetObjectNumber(), 2);
}

TEST_F(ThreadCheck, HandingTheOnlyReferenceOverIsNoFault) {
    IObject* slot = CreateAs<IObject>(classid::CObject).Detach();
    OnOtherThread([&] {
        const auto adopted = CRefPtr<IObject>::Adopt(slot);
        const auto second = adopted;
    });
    ExpectNothing();
}

TEST_F(ThreadCheck, AListIsHandedOverWithItsMembers) {
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    list->AddObject(CreateAs<IObject>(classid::CObject).Get());
    IObjectList* slot = list.Detach();
    OnOtherThread([&] { CRefPtr<IObjectList>::Adopt(slot).Reset(); });
    ExpectNothing();
}

} // namespace
} // namespace vorlund::test
