#include <vorlund/Each.h>

#include <vorlund/ClassIds.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorlund::test {
namespace {

class EachMember : public testing::Test {
protected:
    ~EachMember() noexcept override {}

    void TearDown() override {
        list_.Reset();
        EXPECT_EQ(CProbe::alive, 0);
    }

    /// A reference to the list, as an operation gives it.
    IObjectList* Give() {
        list_->AddRef();
        return list_.Get();
    }

    CLibraryScope library_;
    CRefPtr<IObjectList> list_ = CreateAs<IObjectList>(classid::CObjectList);
};

TEST_F(EachMember, IsSeenInOrder) {
    const auto first = NewProbe();
    const auto second = NewProbe();
    for (const auto* const probe : {&first, &second, &first}) list_->AddObject(probe->Get());
    std::vector<IObject*> seen;
    for (const CRefPtr<IObject>& object : Each<IObject>(Give())) seen.push_back(object.Get());
    EXPECT_EQ(seen, (std::vector<IObject*>{first.Get(), second.Get(), first.Get()}));
    EXPECT_EQ(ReferencesOf(list_.Get()), 1);
}

TEST_F(EachMember, OfAnotherInterfaceIsPassedOver) {
    const auto text = CreateAs<IStringObject>(classid::CStringObject);
    list_->AddObject(NewProbe().Get());
    list_->AddObject(text.Get());
    list_->AddObject(NewProbe().Get());
    int count = 0;
    for (const CRefPtr<IStringObject>& object : Each<IStringObject>(list_)) {
        EXPECT_EQ(object, text);
        ++count;
    }
    EXPECT_EQ(count, 1);
    EXPECT_EQ(ReferencesOf(list_.Get()), 1);
}

TEST_F(EachMember, OfNothingIsNone) {
    for (const auto& object : Each<IObject>(list_)) FAIL() << object.Get();
    for (const auto& object : Each<IObject>(static_cast<IObjectList*>(nullptr))) FAIL() << object.Get();
    for (const auto& object : Each<IObject>(CRefPtr<IObjectList>())) FAIL() << object.Get();
    for (const auto& object : Each<IObject>(static_cast<IObjectEnumerator*>(nullptr))) FAIL() << object.Get();
}

TEST_F(EachMember, IsLeftWithoutATrace) {
    for (int i = 0; i < 3; ++i) list_->AddObject(NewProbe().Get());
    for (const auto& object : Each<IObject>(list_)) {
        EXPECT_TRUE(object);
        list_->RemoveObject(0);
        break;
    }
    EXPECT_EQ(CProbe::alive, 2);
}

TEST_F(EachMember, OfAStoreIsARecord) {
    v.GetDeviceClassStore().RegisterDevice({classid::CObject, DEVICE_TYPE_VIDEO});
    v.GetDeviceClassStore().RegisterDevice({classid::CFile, DEVICE_TYPE_AUDIO});
    std::vector<TDeviceType> types;
    for (const TDeviceClassInfo& device :
         EachRecord<TDeviceClassInfo>(v.GetDeviceClassStore().EnumerateDevices()))
        types.push_back(device.deviceType);
    EXPECT_EQ(types, (std::vector<TDeviceType>{DEVICE_TYPE_VIDEO, DEVICE_TYPE_AUDIO}));
    std::size_t classes = 0;
    for (const TClassInfo& info : EachRecord<TClassInfo>(v.GetClassStore().EnumerateClasses())) {
        EXPECT_NE(info.name, nullptr);
        ++classes;
    }
    EXPECT_EQ(classes, 38u);
}

} // namespace
} // namespace vorlund::test
