/// \file
/// Small objects that tell a test what happens to them.
#pragma once

#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <functional>
#include <utility>

namespace vorlund::test {

/// An object whose living instances are counted.
class CProbe : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x1BADB002, 0x00000001, 0x50524F42, 0x00000045};

    /// Instances whose members exist.
    static inline int alive = 0;

protected:
    CProbe() { ++alive; }
    ~CProbe() { --alive; }
};

/// A new probe. Raises what creating any object raises.
inline CRefPtr<IObject> NewProbe() {
    return CRefPtr<IObject>::Adopt(NewObject<CProbe>());
}

/// A listener that is a plain value of the test: it needs no initialised library and is never destroyed by
/// `Release`.
class CTestListener final : public IObjectListener {
public:
    using TCallback = std::function<void(IObject*)>;

    explicit CTestListener(TCallback callback = {}) : callback_(std::move(callback)) {}
    CTestListener(const CTestListener&) = delete;
    CTestListener& operator=(const CTestListener&) = delete;

    /// How many times an object told its end.
    int GetCalls() const { return calls_; }

    int AddRef() override { return 1; }
    int Release() override { return 1; }
    IObject* QueryInterface(const CId&) override { return nullptr; }
    void AddListener(IObjectListener*) override {}
    void RemoveListener(IObjectListener*) override {}
    int GetObjectNumber() override { return 0; }
    CId GetClassId() override { return CId::Null(); }
    void OnObjectDestroyed(IObject* object) override {
        ++calls_;
        if (callback_) callback_(object);
    }

private:
    TCallback callback_;
    int calls_ = 0;
};

/// The reference count of `object`.
inline int ReferencesOf(IObject* object) {
    object->AddRef();
    return object->Release();
}

} // namespace vorlund::test
