// The device class store: life cycle, registration, creation and the lock that a failed creation leaves,
// enumeration, and the two classes of the class store that are devices by another name.
#include <vorlund/ClassIds.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include "devices/TestDevices.h"
#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/Latch.h"
#include "support/Leaks.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <functional>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using CFirst = CTestDevice<1>;
using CSecond = CTestDevice<2>;
using CThird = CTestDevice<3>;

constexpr const wchar* kFile = devicestorefailures::kDeviceStoreFile;
constexpr const wchar* kCreateDevice = devicestorefailures::kCreateDevice;
constexpr const wchar* kEnumerateDevices = VRL_L("vorlund::CDeviceClassStore::EnumerateDevices");
constexpr const wchar* kRegisterDevice = VRL_L("vorlund::CDeviceClassStore::RegisterDevice");
constexpr const wchar* kNotInitialized = VRL_L("Not initialized");

constexpr TFailure kNotClosed{VRL_L("vorlund::CDeviceClassStore::~CDeviceClassStore"), kFile, 29,
                              VRL_L("Not closed")};
constexpr TFailure kNoObject{kCreateDevice, kFile, 63, VRL_L("Device class not found")};
constexpr TFailure kNoInterface{kCreateDevice, kFile, 69, VRL_L("Device interface not found")};
constexpr TFailure kNoItem{kEnumerateDevices, kFile, 89, VRL_L("Cannot create pointer object")};
constexpr TFailure kRegisterNotInitialized{kRegisterDevice, kFile, 100, kNotInitialized};
constexpr TFailure kClassMissing{kRegisterDevice, kFile, 104, VRL_L("Class must be registered first")};

constexpr CId kUnknownClass{0x7E57DE73, 1, 2, 3};
constexpr CId kOtherClass{0x7E57DE73, 4, 5, 6};

IObject* MakeNothing() {
    return nullptr;
}
[[noreturn]] IObject* MakeTrouble() {
    throw std::runtime_error("factory");
}

/// Adds a class to the class store and names it to `store` as an audio device.
void RegisterFactory(CDeviceClassStore& store, TObjectFactory factory) {
    v.GetClassStore().RegisterClassVrl({kOtherClass, VRL_L("test::COther"), factory});
    store.RegisterDevice({kOtherClass, DEVICE_TYPE_AUDIO});
}

class DeviceClassStore : public testing::Test {
protected:
    DeviceClassStore() {
        store_.Init();
        RegisterDeviceClass<CFirst>();
        RegisterDeviceClass<CSecond>();
        RegisterDeviceClass<CThird>();
    }
    ~DeviceClassStore() noexcept override {
        store_.Close();
        EXPECT_EQ(CLiveObject::GetCount(), 0);
    }

    /// The records, in order.
    static std::vector<TDeviceClassInfo*> Enumerate(const CDeviceClassStore& store) {
        const auto list = CRefPtr<IObjectList>::Adopt(store.EnumerateDevices());
        EXPECT_EQ(list->GetClassId(), classid::CObjectList);
        EXPECT_EQ(ReferencesOf(list.Get()), 1);
        std::vector<TDeviceClassInfo*> records;
        for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
            const auto item = CRefPtr<IObject>::Adopt(list->GetObject(i));
            EXPECT_EQ(item->GetClassId(), classid::CPtrObject);
            EXPECT_EQ(ReferencesOf(item.Get()), 2);
            records.push_back(static_cast<TDeviceClassInfo*>(item.Query<IPtrObject>()->GetPtr()));
        }
        return records;
    }
    /// The class of what is created for `type`.
    CId Create(TDeviceType type) const {
        const auto device = CRefPtr<IDevice>::Adopt(store_.CreateDevice(type));
        EXPECT_EQ(ReferencesOf(device.Get()), 1);
        EXPECT_EQ(device->QueryInterface(IDevice::InterfaceId), device.Get());
        device->Release();
        return device->GetClassId();
    }
    void ExpectNoAudioClass() const {
        ExpectRaises<CClassNotFoundException>(devicestorefailures::kNoClass,
                                              [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
    }

    CLibraryScope library_;
    CDeviceClassStore store_;
};

// Records.

static_assert(DEVICE_TYPE_AUDIO == 0 && DEVICE_TYPE_VIDEO == 1);
static_assert(TDeviceClassInfo(CId(1, 2, 3, 4), DEVICE_TYPE_VIDEO).classId == CId(1, 2, 3, 4));
static_assert(TDeviceClassInfo(CId(1, 2, 3, 4), DEVICE_TYPE_VIDEO).deviceType == DEVICE_TYPE_VIDEO);

// Life cycle.

TEST_F(DeviceClassStore, ClosedStoreRaises) {
    for (const bool wasOpen : {false, true}) {
        CDeviceClassStore store;
        if (wasOpen) {
            store.Init();
            store.Close();
        }
        ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                    [&] { store.CreateDevice(DEVICE_TYPE_AUDIO); });
        // Before the class is looked at.
        ExpectRaises<CBugException>(kRegisterNotInitialized, [&] {
            store.RegisterDevice({kUnknownClass, DEVICE_TYPE_AUDIO});
        });
    }
}

TEST_F(DeviceClassStore, ClosedStoreEnumeratesNothing) {
    CDeviceClassStore store;
    EXPECT_TRUE(Enumerate(store).empty());
    store.Init();
    store.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    store.Close();
    EXPECT_TRUE(Enumerate(store).empty());
}

TEST_F(DeviceClassStore, SecondInitKeepsTheRecords) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    const auto records = Enumerate(store_);
    store_.Init();
    EXPECT_EQ(Enumerate(store_), records);
}

TEST_F(DeviceClassStore, OpensEmptyAfterClose) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    store_.Close();
    store_.Close();
    store_.Init();
    EXPECT_TRUE(Enumerate(store_).empty());
    ExpectNoAudioClass();
}

TEST_F(DeviceClassStore, CloseOfAClosedStoreDoesNothing) {
    const CDebugRecorder recorder;
    CDeviceClassStore store;
    store.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(DeviceClassStore, DestructionWhileOpenIsABug) {
    const CExpectedLeak leak;
    ExpectRaises<CBugException>(kNotClosed, [] {
        CDeviceClassStore store;
        store.Init();
    });
}

TEST_F(DeviceClassStore, LibraryOpensAndClosesItsOwn) {
    CDeviceClassStore& own = v.GetDeviceClassStore();
    EXPECT_TRUE(Enumerate(own).empty());
    own.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    v.Close();
    ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                [&] { own.CreateDevice(DEVICE_TYPE_AUDIO); });
    v.Init();
    EXPECT_TRUE(Enumerate(own).empty());
}

// Registration.

TEST_F(DeviceClassStore, ClassMustBeRegisteredFirst) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    const auto records = Enumerate(store_);
    ExpectRaises<CBugException>(kClassMissing, [&] {
        store_.RegisterDevice({kUnknownClass, DEVICE_TYPE_AUDIO});
    });
    EXPECT_EQ(Enumerate(store_), records);
}

TEST_F(DeviceClassStore, OtherFailuresOfTheClassStorePassOn) {
    v.GetClassStore().Close();
    ExpectRaises<CBugException>(classstorefailures::kGetByIdClosed, [&] {
        store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    });
}

TEST_F(DeviceClassStore, RegistersCopiesThatStayWhereTheyAre) {
    TDeviceClassInfo info(CFirst::ClassId, DEVICE_TYPE_AUDIO);
    store_.RegisterDevice(info);
    info.deviceType = DEVICE_TYPE_VIDEO;
    const TDeviceClassInfo* const first = Enumerate(store_).front();
    EXPECT_NE(first, &info);
    for (int i = 0; i < 1000; ++i) store_.RegisterDevice({CSecond::ClassId, DEVICE_TYPE_VIDEO});
    EXPECT_EQ(Enumerate(store_).front(), first);
    EXPECT_EQ(first->classId, CFirst::ClassId);
    EXPECT_EQ(first->deviceType, DEVICE_TYPE_AUDIO);
}

TEST_F(DeviceClassStore, ClassesThatAreNoDevicesMayBeRegistered) {
    // Only their creation shows it.
    store_.RegisterDevice({classid::CObject, DEVICE_TYPE_AUDIO});
    EXPECT_EQ(Enumerate(store_).size(), 1u);
}

// Creation.

TEST_F(DeviceClassStore, CreatesTheClassOfTheType) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_VIDEO});
    store_.RegisterDevice({CSecond::ClassId, DEVICE_TYPE_AUDIO});
    EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CSecond::ClassId);
    EXPECT_EQ(Create(DEVICE_TYPE_VIDEO), CFirst::ClassId);
}

TEST_F(DeviceClassStore, FirstClassOfATypeWins) {
    store_.RegisterDevice({CThird::ClassId, DEVICE_TYPE_AUDIO});
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    store_.RegisterDevice({CSecond::ClassId, DEVICE_TYPE_AUDIO});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CThird::ClassId);
}

TEST_F(DeviceClassStore, ANewDeviceEachTime) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    const auto one = CRefPtr<IDevice>::Adopt(store_.CreateDevice(DEVICE_TYPE_AUDIO));
    const auto other = CRefPtr<IDevice>::Adopt(store_.CreateDevice(DEVICE_TYPE_AUDIO));
    EXPECT_NE(one.Get(), other.Get());
    EXPECT_EQ(other->GetObjectNumber(), one->GetObjectNumber() + 1);
}

TEST_F(DeviceClassStore, ClassThatYieldsNothingIsABug) {
    RegisterFactory(store_, &MakeNothing);
    ExpectRaises<CBugException>(kNoObject, [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
}

TEST_F(DeviceClassStore, ClassWithoutTheInterfaceIsABug) {
    CProbe::alive = 0;
    RegisterFactory(store_, &NewObject<CProbe>);
    ExpectRaises<CBugException>(kNoInterface, [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
    EXPECT_EQ(CProbe::alive, 0);
}

/// Notes whether it ended while a failure was on its way.
class CNoDevice : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x7E57DE73, 7, 8, 9};

    static inline int raising = -1;

protected:
    ~CNoDevice() { raising = std::uncaught_exceptions(); }
};

TEST_F(DeviceClassStore, ObjectWithoutTheInterfaceEndsBeforeTheFailure) {
    CNoDevice::raising = -1;
    RegisterFactory(store_, &NewObject<CNoDevice>);
    ExpectRaises<CBugException>(kNoInterface, [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
    EXPECT_EQ(CNoDevice::raising, 0);
}

TEST_F(DeviceClassStore, FailuresOfTheClassStorePassOn) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    v.GetClassStore().Clear();
    ExpectRaises<CClassNotFoundException>(classstorefailures::kCreateByIdNotFound,
                                          [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
}

// The lock.

// That it keeps other threads out is seen in a child process, in Unload_test: they wait for ever.

void ExpectDevice(const std::function<IDevice*()>& create) {
    IDevice* device = nullptr;
    EXPECT_NO_THROW(device = create());
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(CRefPtr<IDevice>::Adopt(device)->GetClassId(), CFirst::ClassId);
}
void ExpectNoObject(const std::function<IDevice*()>& create) {
    ExpectRaises<CBugException>(kNoObject, create);
}
void ExpectNoInterface(const std::function<IDevice*()>& create) {
    ExpectRaises<CBugException>(kNoInterface, create);
}
void ExpectTrouble(const std::function<IDevice*()>& create) {
    EXPECT_THROW(create(), std::runtime_error);
}

struct TLockRow {
    const char* name;
    TObjectFactory factory;
    void (*expectOutcome)(const std::function<IDevice*()>& create);
};
class DeviceClassStoreLock : public testing::TestWithParam<TLockRow> {};

TEST_P(DeviceClassStoreLock, IsGivenBack) {
    const CLibraryScope library;
    CDeviceClassStore store;
    store.Init();
    RegisterDeviceClass<CFirst>();
    RegisterFactory(store, GetParam().factory);
    GetParam().expectOutcome([&] { return store.CreateDevice(DEVICE_TYPE_AUDIO); });
    if (HasFailure()) {
        store.Close();
        return;
    }
    // The class store is another matter: by its own rule it is left locked by a factory that raises.
    v.Close();
    v.Init();
    RegisterDeviceClass<CFirst>();
    CActor other;
    other.Do([&] { store.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_VIDEO}); });
    EXPECT_EQ(CRefPtr<IDevice>::Adopt(store.CreateDevice(DEVICE_TYPE_VIDEO))->GetClassId(), CFirst::ClassId);
    store.Close();
}

INSTANTIATE_TEST_SUITE_P(Rows, DeviceClassStoreLock,
                         testing::Values(TLockRow{"AfterSuccess", &NewObject<CFirst>, &ExpectDevice},
                                         TLockRow{"NoObject", &MakeNothing, &ExpectNoObject},
                                         TLockRow{"NoInterface", &NewObject<CProbe>, &ExpectNoInterface},
                                         TLockRow{"FactoryThatRaises", &MakeTrouble, &ExpectTrouble}),
                         [](const auto& row) { return row.param.name; });

TEST_F(DeviceClassStore, ThreadOfAFailedCreationGoesOn) {
    store_.RegisterDevice({CSecond::ClassId, DEVICE_TYPE_VIDEO});
    for (int i = 0; i < 3; ++i) ExpectNoAudioClass();
    EXPECT_EQ(Enumerate(store_).size(), 1u);
    EXPECT_EQ(Create(DEVICE_TYPE_VIDEO), CSecond::ClassId);
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CFirst::ClassId);
}

TEST_F(DeviceClassStore, CloseGivesTheLockBack) {
    for (int i = 0; i < 3; ++i) ExpectNoAudioClass();
    const CDebugRecorder recorder;
    store_.Close();
    store_.Init();
    EXPECT_TRUE(recorder.GetEntries().empty());
    CActor other;
    other.Do([&] { store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO}); });
    EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CFirst::ClassId);
}

TEST_F(DeviceClassStore, LockOfAnEndedThreadShowsAtTheEnd) {
    CDeviceClassStore store;
    store.Init();
    store.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_VIDEO});
    CActor().Do([&] {
        ExpectRaises<CClassNotFoundException>(devicestorefailures::kNoClass,
                                              [&] { store.CreateDevice(DEVICE_TYPE_AUDIO); });
    });
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { store.Close(); });
    // It is closed all the same.
    ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                [&] { store.CreateDevice(DEVICE_TYPE_VIDEO); });
    store.Close();
    store.Init();
    EXPECT_TRUE(Enumerate(store).empty());
    store.Close();
}

TEST_F(DeviceClassStore, CloseTurnsAwayThreadsThatWait) {
    CActor owner, creator, registrar, enumerator;
    owner.Do([&] { ExpectNoAudioClass(); });
    creator.Start([&] {
        ExpectRaises<CBugException>(devicestorefailures::kCreateClosed,
                                    [&] { store_.CreateDevice(DEVICE_TYPE_AUDIO); });
    });
    EXPECT_TRUE(creator.StaysBusy());
    registrar.Start([&] {
        ExpectRaises<CBugException>(kRegisterNotInitialized, [&] {
            store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
        });
    });
    EXPECT_TRUE(registrar.StaysBusy());
    enumerator.Start([&] { EXPECT_TRUE(Enumerate(store_).empty()); });
    EXPECT_TRUE(enumerator.StaysBusy());
    // Neither the thread that has left the lock behind nor those that wait keep the store open.
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { store_.Close(); });
    EXPECT_TRUE(creator.Finishes());
    EXPECT_TRUE(registrar.Finishes());
    EXPECT_TRUE(enumerator.Finishes());
    store_.Init();
    owner.Do([&] { store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO}); });
    EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CFirst::ClassId);
}

CLatch* isInDeviceFactory = nullptr;
CLatch* mayLeaveDeviceFactory = nullptr;

TEST_F(DeviceClassStore, CloseLeavesItsMemoryToACreationThatTakesTooLong) {
    CLatch isInside(1), mayLeave(1);
    isInDeviceFactory = &isInside;
    mayLeaveDeviceFactory = &mayLeave;
    RegisterFactory(store_, []() -> IObject* {
        isInDeviceFactory->CountDown();
        mayLeaveDeviceFactory->Wait();
        return NewObject<CFirst>();
    });
    CActor creator;
    creator.Start([&] { EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CFirst::ClassId); });
    isInside.Wait();
    const auto start = std::chrono::steady_clock::now();
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { store_.Close(); });
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    mayLeave.CountDown();
    EXPECT_TRUE(creator.Finishes());
}

TEST_F(DeviceClassStore, ThreadGivesBackTheLockOfFailedCreations) {
    CActor owner, other;
    owner.Do([&] {
        for (int i = 0; i < 3; ++i) ExpectNoAudioClass();
    });
    other.Start([&] { store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO}); });
    EXPECT_TRUE(other.StaysBusy());
    EXPECT_EQ(store_.GiveBackLock(), 0);
    owner.Do([&] { EXPECT_EQ(store_.GiveBackLock(), 3); });
    EXPECT_TRUE(other.Finishes());
    EXPECT_EQ(Create(DEVICE_TYPE_AUDIO), CFirst::ClassId);
}

// Enumeration.

TEST_F(DeviceClassStore, EnumeratesInTheOrderOfRegistration) {
    const TDeviceClassInfo rows[] = {{CSecond::ClassId, DEVICE_TYPE_VIDEO},
                                     {CFirst::ClassId, DEVICE_TYPE_AUDIO},
                                     {CSecond::ClassId, DEVICE_TYPE_VIDEO},
                                     {CSecond::ClassId, DEVICE_TYPE_AUDIO}};
    for (const TDeviceClassInfo& row : rows) store_.RegisterDevice(row);
    const auto records = Enumerate(store_);
    ASSERT_EQ(records.size(), std::size(rows));
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i]->classId, rows[i].classId) << i;
        EXPECT_EQ(records[i]->deviceType, rows[i].deviceType) << i;
    }
    EXPECT_EQ(Enumerate(store_), records);
}

TEST_F(DeviceClassStore, ListIsASnapshot) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    const auto list = CRefPtr<IObjectList>::Adopt(store_.EnumerateDevices());
    store_.RegisterDevice({CSecond::ClassId, DEVICE_TYPE_AUDIO});
    EXPECT_EQ(list->GetObjectCount(), 1u);
    // The list takes its number first.
    EXPECT_EQ(CRefPtr<IObject>::Adopt(list->GetObject(0))->GetObjectNumber(), list->GetObjectNumber() + 1);
}

TEST_F(DeviceClassStore, EnumerationNeedsTheLibrary) {
    v.Close();
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed, [&] { store_.EnumerateDevices(); });
}

TEST_F(DeviceClassStore, ReplacedServiceClassesAreABug) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    const TClassInfo list = *v.GetClassStore().GetClassInfo(classid::CObjectList);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CObjectList, VRL_L("test::CNone"), &MakeNothing});
    ExpectRaises<CBugException>({kEnumerateDevices, kFile, 81, VRL_L("Cannot create object list")},
                                [&] { store_.EnumerateDevices(); });
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(list);
    v.GetClassStore().RegisterClassVrl({classid::CPtrObject, VRL_L("test::CNone"), &MakeNothing});
    ExpectRaises<CBugException>(kNoItem, [&] { store_.EnumerateDevices(); });
    // The lock is free again.
    CActor().Do([&] { ExpectRaises<CBugException>(kNoItem, [&] { store_.EnumerateDevices(); }); });
}

// Devices by another name.

struct TAliasRow {
    const char* name;
    const wchar* registeredName;
    CId id;
    TDeviceType type;
};
class DeviceClassStoreAliases : public testing::TestWithParam<TAliasRow> {
protected:
    /// Creates by name and by identifier.
    template <class TCheck> static void ForBothKeys(TCheck check) {
        check([] { return v.GetClassStore().CreateObject(GetParam().registeredName); });
        check([] { return v.GetClassStore().CreateObject(GetParam().id); });
    }

    CLibraryScope library_;
};

TEST_P(DeviceClassStoreAliases, CreateTheDeviceOfTheirType) {
    const TDeviceType other = GetParam().type == DEVICE_TYPE_AUDIO ? DEVICE_TYPE_VIDEO : DEVICE_TYPE_AUDIO;
    v.GetDeviceClassStore().RegisterDevice({RegisterDeviceClass<CFirst>(), other});
    v.GetDeviceClassStore().RegisterDevice({RegisterDeviceClass<CSecond>(), GetParam().type});
    ForBothKeys([](auto create) {
        const CRefPtr<IObject> object = CRefPtr<IObject>::Adopt(create());
        EXPECT_EQ(object->GetClassId(), CSecond::ClassId);
        EXPECT_EQ(ReferencesOf(object.Get()), 1);
        EXPECT_TRUE(object.Query<IDevice>());
    });
}

TEST_P(DeviceClassStoreAliases, MayStandForThePlainDevice) {
    v.GetDeviceClassStore().RegisterDevice({classid::CDevice, GetParam().type});
    ForBothKeys(
        [](auto create) { EXPECT_EQ(CRefPtr<IObject>::Adopt(create())->GetClassId(), classid::CDevice); });
}

TEST_P(DeviceClassStoreAliases, FailAsTheirCreationFails) {
    v.GetDeviceClassStore().RegisterDevice(
        {RegisterDeviceClass<CFirst>(),
         GetParam().type == DEVICE_TYPE_AUDIO ? DEVICE_TYPE_VIDEO : DEVICE_TYPE_AUDIO});
    ForBothKeys(
        [](auto create) { ExpectRaises<CClassNotFoundException>(devicestorefailures::kNoClass, create); });
    // Both stores are left with this thread, which can go on, and close the library.
    v.GetDeviceClassStore().RegisterDevice({RegisterDeviceClass<CSecond>(), GetParam().type});
    EXPECT_EQ(CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(GetParam().id))->GetClassId(),
              CSecond::ClassId);
    const CDebugRecorder recorder;
    v.Close();
    v.Init();
    EXPECT_TRUE(recorder.GetEntries().empty());
    CActor().Do([] { EXPECT_TRUE(CreateAs<IDevice>(classid::CDevice)); });
}

INSTANTIATE_TEST_SUITE_P(Rows, DeviceClassStoreAliases,
                         testing::Values(TAliasRow{"Audio",
                                                   VRL_L("vorlund::CAudioDevice"),
                                                   {0x9DF8979E, 0x14424383, 0xA3164F6A, 0xD110B15C},
                                                   DEVICE_TYPE_AUDIO},
                                         TAliasRow{"Video",
                                                   VRL_L("vorlund::CVideoDevice"),
                                                   {0xF81C0DB0, 0x960349F4, 0x8C229044, 0xA67DD19C},
                                                   DEVICE_TYPE_VIDEO}),
                         [](const auto& row) { return row.param.name; });

// Threads. Objects are made one thread at a time: the counter takes no lock.

TEST_F(DeviceClassStore, RegistersFromAnyThread) {
    constexpr int kThreads = 4;
    constexpr int kRecords = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            for (int record = 0; record < kRecords; ++record)
                store_.RegisterDevice({CFirst::ClassId, i % 2 ? DEVICE_TYPE_AUDIO : DEVICE_TYPE_VIDEO});
        });
    }
    for (std::thread& thread : threads) thread.join();
    int counts[2] = {};
    for (const TDeviceClassInfo* const info : Enumerate(store_)) ++counts[info->deviceType];
    EXPECT_EQ(counts[DEVICE_TYPE_AUDIO], kThreads / 2 * kRecords);
    EXPECT_EQ(counts[DEVICE_TYPE_VIDEO], kThreads / 2 * kRecords);
}

TEST_F(DeviceClassStore, CreatesFromAnyThread) {
    store_.RegisterDevice({CFirst::ClassId, DEVICE_TYPE_AUDIO});
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    std::vector<IDevice*> devices[kThreads];
    for (int i = 0; i < kThreads; ++i) {
        // The lock covers the creation, and with it the counter; a destruction would meet it.
        threads.emplace_back([&, i] {
            for (int device = 0; device < 200; ++device)
                devices[i].push_back(store_.CreateDevice(DEVICE_TYPE_AUDIO));
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<int> numbers;
    for (const auto& own : devices) {
        for (IDevice* const device : own) {
            numbers.insert(device->GetObjectNumber());
            EXPECT_EQ(device->Release(), 0);
        }
    }
    EXPECT_EQ(numbers.size(), kThreads * 200u);
}

} // namespace
} // namespace vorlund::test
