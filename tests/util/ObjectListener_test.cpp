#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class ObjectListener : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(ObjectListener, ListenerBaseHearsAndDoesNothing) {
    const auto listener = CreateAs<IObjectListener>(classid::CObjectListener);
    auto object = NewProbe();
    object->AddListener(listener.Get());
    object->AddListener(listener.Get());
    object.Reset();
    EXPECT_EQ(CProbe::alive, 0);
    EXPECT_EQ(ReferencesOf(listener.Get()), 1);
    listener->OnObjectDestroyed(nullptr);
}

TEST_F(ObjectListener, ListenerHearsOfListeners) {
    // A listener is an object and may be listened to, even by itself.
    auto listener = CreateAs<IObjectListener>(classid::CObjectListener);
    CTestListener ofListener;
    listener->AddListener(&ofListener);
    listener->AddListener(listener.Get());
    listener.Reset();
    EXPECT_EQ(ofListener.GetCalls(), 1);
}

} // namespace
} // namespace vorlund::test
