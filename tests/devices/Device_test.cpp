// The plain device, and devices with more to them.
#include <vorlund/ClassIds.h>
#include <vorlund/Device.h>
#include <vorlund/RefPtr.h>

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <vorlund/ObjectImpl.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(Device, DoesNothing) {
    const CLibraryScope library;
    const auto device = CreateAs<IDevice>(classid::CDevice);
    ASSERT_TRUE(device);
    const CDebugRecorder recorder;
    device->Close();
    device->Open();
    device->Open();
    device->Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
    EXPECT_EQ(ReferencesOf(device.Get()), 1);
    EXPECT_EQ(device->GetClassId(), CId(0x89473E57, 0xFE5D4DBA, 0xA79AB5E1, 0x098F2C75));
}

/// An interface of an application's own devices, as an audio plug-in would have.
class ISpeaker : public IDevice {
public:
    using TBase = IDevice;
    static constexpr CId InterfaceId{0x7E57DE72, 1, 2, 3};

    virtual bool IsOpen() = 0;

protected:
    ~ISpeaker() = default;
};

class CSpeaker : public CObjectImpl<ISpeaker> {
public:
    static constexpr CId ClassId{0x7E57DE72, 4, 5, 6};

    void Open() override { isOpen_ = true; }
    void Close() override { isOpen_ = false; }
    bool IsOpen() override { return isOpen_; }

private:
    bool isOpen_ = false;
};

TEST(Device, ClassesOverrideWhatItDoes) {
    const CLibraryScope library;
    const auto object = CRefPtr<IObject>::Adopt(NewObject<CSpeaker>());
    const auto device = object.Query<IDevice>();
    const auto speaker = object.Query<ISpeaker>();
    ASSERT_TRUE(device && speaker);
    EXPECT_FALSE(speaker->IsOpen());
    device->Open();
    EXPECT_TRUE(speaker->IsOpen());
    device->Close();
    EXPECT_FALSE(speaker->IsOpen());
    EXPECT_FALSE(CreateAs<ISpeaker>(classid::CDevice));
}

} // namespace
} // namespace vorlund::test
