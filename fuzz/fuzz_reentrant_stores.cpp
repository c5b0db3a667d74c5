/// \file
/// The class, device and codec stores with factories and decoders that come back to them: each call draws
/// from the input what it does, to any depth. A model says which class is found, and how often a lock is left
/// behind.
#include "ModelInput.h"
#include "WavFuzz.h"
#include "support/TestDecoders.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ClassStore.h>
#include <vorlund/Device.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectList.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

using namespace vorlund;
using namespace vorlund::fuzz;
using test::CTestDecoders;
using test::TestFormat;

namespace {

constexpr std::size_t kFactories = 4;
constexpr std::size_t kDecoders = 6;
constexpr unsigned int kFormats = 5;
constexpr int kMaxDepth = 4;
constexpr int kMaxActions = 100;

constexpr CId ClassOf(std::size_t number) {
    return {0xF0225EED, 0x1A2B3C4D, 0x55667788, static_cast<unsigned int>(number)};
}
constexpr const wchar* kNames[] = {VRL_L("fuzz::CFirst"), VRL_L("fuzz::CSecond"), VRL_L("fuzz::CThird")};

constexpr TFailure kOnRequest{VRL_L("Create"), VRL_L("fuzz/fuzz_reentrant_stores"), 1, VRL_L("on request")};

class CDevice : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId{0xF0225EED, 0x1A2B3C4D, 0x55667788, 0xDE};
    void Open() override {}
    void Close() override {}
};

IObject* Create(std::size_t factory);
template <std::size_t factory> IObject* Factory() {
    return Create(factory);
}
constexpr TObjectFactory kFactoryTable[] = {&Factory<0>, &Factory<1>, &Factory<2>, &Factory<3>, nullptr};
static_assert(std::size(kFactoryTable) == kFactories + 1);

struct TEntry {
    std::size_t id;
    std::size_t name;
    std::size_t factory;
};

/// What a store has, and how often its lock was left with this thread. A new number after each closing.
struct TStoreModel {
    bool isOpen = false;
    int generation = 0;
    int left = 0;

    void Open() {
        if (!std::exchange(isOpen, true)) ++generation;
    }
    void Close() {
        isOpen = false;
        left = 0;
    }
    /// Notes that an operation has ended and leaves the lock, when it began in `began`.
    void Leave(int began) {
        if (isOpen && generation == began) ++left;
    }
};

class CScene {
public:
    CScene(const std::uint8_t* data, std::size_t size) : input_(data, size) {}
    CScene(const CScene&) = delete;
    CScene& operator=(const CScene&) = delete;

    void Run();
    IObject* OnCreate(std::size_t factory);

private:
    void MaybeAct();
    void Act();
    void ActOnClasses(unsigned int action);
    void ActOnDevices(unsigned int action);
    void ActOnCodecs(unsigned int action);
    template <class TIsWanted> const TEntry* Find(TIsWanted isWanted) const;
    template <class TKey> void CheckCreate(const TKey& key, const TEntry* expected);
    template <class TKey> void CheckLookup(const TKey& key, const TEntry* expected) const;
    void CreateDevice(TDeviceType type);

    CInput input_;
    CClassStore classes_;
    std::vector<TEntry> entries_;
    TStoreModel classesModel_;
    CDeviceClassStore devices_;
    std::vector<std::pair<std::size_t, TDeviceType>> deviceEntries_;
    TStoreModel devicesModel_;
    CCodecClassStore codecs_;
    bool areCodecsOpen_ = false;
    CRefPtr<test::CMemoryInputStream> stream_ = test::Make<test::CMemoryInputStream>();
    /// The factory that must be called next, or one beyond the table.
    std::size_t expected_ = kFactories;
    int depth_ = 0;
    int actions_ = 0;
};

/// The scene of this run.
CScene* scene = nullptr;

IObject* Create(std::size_t factory) {
    return scene->OnCreate(factory);
}

/// The library's store would keep every further registration, so devices and decoders are registered once.
void RegisterClasses() {
    static const bool isDone = [] {
        for (std::size_t i = 0; i < kFactories; ++i) {
            v.GetClassStore().RegisterClassVrl({ClassOf(i), VRL_L("fuzz::CDevice"), kFactoryTable[i]});
        }
        CTestDecoders decoders;
        CCodecClassStore store;
        store.Init();
        for (std::size_t i = 0; i < kDecoders; ++i) decoders.Register(store, i, {});
        store.Close();
        return true;
    }();
    Check(isDone);
}

void Drain(IObjectEnumerator* enumerator, std::size_t expected) {
    const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
    std::size_t count = 0;
    while (const auto object = CRefPtr<IObject>::Adopt(owner->GetNext())) ++count;
    Check(count == expected);
}

IObject* CScene::OnCreate(std::size_t factory) {
    Check(factory == expected_);
    expected_ = kFactories;
    const unsigned int kind = input_.Byte() % 8;
    MaybeAct();
    if (kind == 0) return nullptr;
    if (kind == 1) Raise<CIOException>(kOnRequest);
    if (kind == 2) return CreateAs<IPtrObject>(classid::CPtrObject).Detach();
    return NewObject<CDevice>();
}

void CScene::MaybeAct() {
    if (depth_ >= kMaxDepth || actions_ >= kMaxActions || input_.IsEmpty()) return;
    if (input_.Byte() % 2 == 0) Act();
}

/// One action, of the run itself or of a factory or decoder.
void CScene::Act() {
    ++actions_;
    ++depth_;
    const unsigned int action = input_.Byte() % 24;
    if (action < 11)
        ActOnClasses(action);
    else if (action < 17)
        ActOnDevices(action);
    else
        ActOnCodecs(action);
    --depth_;
}

template <class TIsWanted> const TEntry* CScene::Find(TIsWanted isWanted) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), isWanted);
    return found == entries_.end() ? nullptr : &*found;
}

template <class TKey> void CScene::CheckCreate(const TKey& key, const TEntry* expected) {
    const bool canCreate = classesModel_.isOpen && expected && expected->factory < kFactories;
    const TExceptionType failure = classesModel_.isOpen ? EXCEPTION_TYPE_CLASS_NOT_FOUND : EXCEPTION_TYPE_BUG;
    const int generation = classesModel_.generation;
    if (canCreate) expected_ = expected->factory;
    const TExceptionType raised = TypeOf([&] {
        if (IObject* const object = classes_.CreateObject(key)) Check(object->Release() == 0);
    });
    if (!canCreate) {
        Check(raised == failure);
    } else if (raised != EXCEPTION_TYPE_GENERIC) {
        Check(raised == EXCEPTION_TYPE_IO);
        classesModel_.Leave(generation);
    }
    Check(expected_ == kFactories);
}

template <class TKey> void CScene::CheckLookup(const TKey& key, const TEntry* expected) const {
    const TExceptionType raised = TypeOf([&] {
        const TClassInfo* const info = classes_.GetClassInfo(key);
        Check(expected && info->id == ClassOf(expected->id) && info->name == kNames[expected->name]);
        Check(info->factory == kFactoryTable[expected->factory]);
    });
    if (!classesModel_.isOpen)
        Check(raised == EXCEPTION_TYPE_BUG);
    else
        Check(raised == (expected ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_CLASS_NOT_FOUND));
}

void CScene::ActOnClasses(unsigned int action) {
    const std::size_t id = input_.Byte() % 4;
    const std::size_t name = input_.Byte() % std::size(kNames);
    const TEntry* const byId = Find([id](const TEntry& entry) { return entry.id == id; });
    const TEntry* const byName = Find([name](const TEntry& entry) { return entry.name == name; });
    switch (action) {
    case 0:
        CheckCreate(ClassOf(id), byId);
        break;
    case 1:
        CheckCreate(kNames[name], byName);
        break;
    case 2:
        CheckLookup(ClassOf(id), byId);
        break;
    case 3:
        CheckLookup(kNames[name], byName);
        break;
    case 4:
        classes_.Clear();
        entries_.clear();
        break;
    case 5:
        Drain(classes_.EnumerateClasses(), entries_.size());
        break;
    case 6:
        Check(classes_.GiveBackLock() == std::exchange(classesModel_.left, 0));
        break;
    case 7:
        classes_.Close();
        classesModel_.Close();
        entries_.clear();
        break;
    default: {
        if (action == 8) {
            classes_.Init();
            classesModel_.Open();
        }
        const std::size_t factory = input_.Byte() % std::size(kFactoryTable);
        const TExceptionType raised = TypeOf([&] {
            classes_.RegisterClassVrl({ClassOf(id), kNames[name], kFactoryTable[factory]});
        });
        Check(raised == (classesModel_.isOpen ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_BUG));
        if (classesModel_.isOpen) entries_.push_back({id, name, factory});
    }
    }
}

void CScene::CreateDevice(TDeviceType type) {
    const auto found = std::find_if(deviceEntries_.begin(), deviceEntries_.end(),
                                    [type](const auto& entry) { return entry.second == type; });
    const bool wasOpen = devicesModel_.isOpen;
    const bool canCreate = wasOpen && found != deviceEntries_.end();
    const int generation = devicesModel_.generation;
    if (canCreate) expected_ = found->first;
    const TExceptionType raised = TypeOf([&] { Check(devices_.CreateDevice(type)->Release() == 0); });
    if (!wasOpen) {
        Check(raised == EXCEPTION_TYPE_BUG);
    } else if (!canCreate) {
        Check(raised == EXCEPTION_TYPE_CLASS_NOT_FOUND);
        devicesModel_.Leave(generation);
    } else {
        Check(raised == EXCEPTION_TYPE_GENERIC || raised == EXCEPTION_TYPE_BUG ||
              raised == EXCEPTION_TYPE_IO);
        // A factory that raises leaves the lock of the library's own store.
        if (raised == EXCEPTION_TYPE_IO) v.GetClassStore().GiveBackLock();
    }
    Check(expected_ == kFactories);
}

void CScene::ActOnDevices(unsigned int action) {
    const TDeviceType type = input_.Byte() % 2 ? DEVICE_TYPE_VIDEO : DEVICE_TYPE_AUDIO;
    switch (action) {
    case 11:
    case 12:
        CreateDevice(type);
        break;
    case 13: {
        const auto list = CRefPtr<IObjectList>::Adopt(devices_.EnumerateDevices());
        Check(list->GetObjectCount() == deviceEntries_.size());
        break;
    }
    case 14:
        Check(devices_.GiveBackLock() == std::exchange(devicesModel_.left, 0));
        break;
    case 15:
        devices_.Close();
        devicesModel_.Close();
        deviceEntries_.clear();
        break;
    default: {
        devices_.Init();
        devicesModel_.Open();
        const std::size_t factory = input_.Byte() % kFactories;
        devices_.RegisterDevice({ClassOf(factory), type});
        deviceEntries_.push_back({factory, type});
    }
    }
}

void CScene::ActOnCodecs(unsigned int action) {
    const unsigned int from = input_.Byte() % (kFormats + 1);
    const unsigned int to = 1 + input_.Byte() % kFormats;
    switch (action) {
    case 17:
        codecs_.Close();
        areCodecsOpen_ = false;
        break;
    case 18:
    case 19:
    case 20: {
        codecs_.Init();
        areCodecsOpen_ = true;
        const std::size_t decoder = input_.Byte() % kDecoders;
        test::TDecoderPlan& plan = CTestDecoders::plans[decoder];
        plan.accepts = from == 0 ? CId::Null() : TestFormat(from);
        plan.produces = TestFormat(to);
        codecs_.RegisterDecoder({test::TestDecoderId(decoder), plan.accepts, plan.produces});
        break;
    }
    case 21: {
        const auto decoders = CRefPtr<IObjectEnumerator>::Adopt(codecs_.EnumerateDecoders());
        Check(areCodecsOpen_ || !decoders->HasNext());
        break;
    }
    default: {
        const bool wasOpen = areCodecsOpen_;
        const CId wanted = from == 0 ? CId::Null() : TestFormat(from);
        const TExceptionType raised = TypeOf([&] {
            const auto found = CRefPtr<IInputStream>::Adopt(codecs_.DecodeStream(stream_.Get(), wanted));
            Check(found && (from == 0 || found->GetFormat().id == wanted));
        });
        Check(wasOpen ? raised == EXCEPTION_TYPE_GENERIC || raised == EXCEPTION_TYPE_DATA_FORMAT
                      : raised == EXCEPTION_TYPE_BUG);
    }
    }
}

void CScene::Run() {
    scene = this;
    stream_->format.Set(test::HeadOnly(TestFormat(1)));
    for (test::TDecoderPlan& plan : CTestDecoders::plans) {
        plan.onConnect = [this](IInputStream*) { MaybeAct(); };
    }
    while (!input_.IsEmpty() && actions_ < kMaxActions) Act();
    Check(classes_.GiveBackLock() == classesModel_.left);
    Check(devices_.GiveBackLock() == devicesModel_.left);
    classes_.Close();
    devices_.Close();
    codecs_.Close();
    stream_->AddRef();
    Check(stream_->Release() == 1);
    Check(v.GetClassStore().GiveBackLock() == 0);
    scene = nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    RegisterClasses();
    const CTestDecoders decoders;
    CScene(data, size).Run();
    return 0;
}
