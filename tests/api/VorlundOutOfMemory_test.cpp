// The start of the library when memory runs out.
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "api/ClassStoreTest.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <vector>

namespace vorlund::test {
namespace {

TEST(VorlundOutOfMemory, InitLeavesWhatItHasDoneAndMayBeRepeated) {
    v.Init();
    const std::size_t builtins = Classes(v.GetClassStore()).size();
    v.Close();
    const CDebugRecorder recorder;
    const std::size_t refusals = RefuseEachAllocation(
        [] { v.Init(); },
        [&] {
            // Not initialised: closing does nothing, so a second start finds the stores open and registers
            // every class again.
            v.Close();
            v.Init();
            const auto classes = Classes(v.GetClassStore());
            EXPECT_GE(classes.size(), builtins);
            EXPECT_LE(classes.size(), 2 * builtins);
            for (const TClassInfo* const info : classes) {
                EXPECT_EQ(v.GetClassStore().GetClassInfo(info->id)->name, info->name);
            }
            v.Close();
            ExpectRaises<CBugException>(kGetByIdClosed, [] { v.GetClassStore().GetClassInfo(CId::Null()); });
            ExpectRaises<CBugException>(counterfailures::kCreateClosed,
                                        [] { v.GetObjectCounter().OnCreateObject({}); });
        },
        TKept::Room);
    EXPECT_GT(refusals, builtins);
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), 1);
    v.Close();
}

TEST(VorlundOutOfMemory, AbandonUndoesWhatInitHasDone) {
    const CDebugRecorder recorder;
    EXPECT_GT(RefuseEachAllocation([] { v.Init(); },
                                   [] {
                                       v.Abandon();
                                       ExpectRaises<CBugException>(kGetByIdClosed, [] {
                                           v.GetClassStore().GetClassInfo(CId::Null());
                                       });
                                       ExpectRaises<CBugException>(counterfailures::kCreateClosed, [] {
                                           v.GetObjectCounter().OnCreateObject({});
                                       });
                                   },
                                   TKept::Room),
              100u);
    const CMemoryWatch watch;
    v.Abandon();
    // As after a start that went well.
    v.Init();
    const std::size_t builtins = Classes(v.GetClassStore()).size();
    v.Abandon();
    v.Init();
    EXPECT_EQ(Classes(v.GetClassStore()).size(), builtins);
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), static_cast<int>(builtins) + 2);
    v.Abandon();
    EXPECT_LE(watch.GetLiveBlocks(), 0);
}

TEST(VorlundOutOfMemory, PluginStoreWithoutMemoryMakesItsDataLater) {
    const auto isWhole = [](const CPluginStore& store) {
        // The executable's folder is among those that it begins with.
        const auto names = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateLoadedPlugins());
        return !names->HasNext() && !store.IsPluginLoaded(VRL_L("none"));
    };
    v.Init();
    std::size_t refusals = 0;
    for (bool isRefused = true; isRefused; ++refusals) {
        const CMemoryWatch watch;
        {
            std::optional<CPluginStore> store;
            {
                const CAllocationFailure failure(refusals);
                EXPECT_NO_THROW(store.emplace());
                isRefused = failure.HasFailed();
            }
            store->Close();
            EXPECT_TRUE(isWhole(*store));
            EXPECT_NO_THROW(store->AddPluginPath(VRL_L("some folder")));
        }
        EXPECT_EQ(watch.GetLiveBlocks(), 0) << refusals;
    }
    EXPECT_GE(refusals, 3u);
    v.Close();
}

TEST(VorlundOutOfMemory, RepeatedInitFindsTheCounterAndThePartOfTheClasses) {
    // The counter is the last thing that Init allocates before it looks for plug-ins.
    std::size_t last = 0;
    {
        const CAllocationCount count;
        v.Init();
        const std::size_t whole = count.Get();
        v.GetPluginStore().LoadAvailablePlugins();
        const std::size_t search = count.Get() - whole;
        last = whole - search - 1;
        v.Close();
    }
    {
        const CAllocationFailure failure(last);
        EXPECT_THROW(v.Init(), std::bad_alloc);
    }
    ExpectRaises<CBugException>(counterfailures::kCreateClosed,
                                [] { v.GetObjectCounter().OnCreateObject({}); });
    EXPECT_EQ(Narrow(v.GetClassStore().GetClassInfo(classid::CObject)->name), "vorlund::CObject");
    v.Init();
    // The whole table twice, in order.
    const auto classes = Classes(v.GetClassStore());
    const std::size_t half = classes.size() / 2;
    ASSERT_EQ(classes.size(), 2 * half);
    for (std::size_t i = 0; i < half; ++i) {
        EXPECT_EQ(classes[i]->id, classes[half + i]->id);
        EXPECT_EQ(v.GetClassStore().GetClassInfo(classes[i]->id), classes[i]);
    }
    v.Close();
}

} // namespace
} // namespace vorlund::test
