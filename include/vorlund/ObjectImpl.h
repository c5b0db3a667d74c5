/// \file
/// The implementation layers of the object model, for the library's own classes and for those of plug-ins.
///
/// A class derives from `CObjectImpl<Interface>` (or from a layer above it), states its class identifier as
/// `static constexpr CId ClassId`, and implements its own operations. Its objects are made by
/// `NewObject<Class>()`, which is also the factory to register:
///
///     class CTick : public CObjectImpl<IObjectListener> { ... };
///     v.GetClassStore().RegisterClassVrl({CTick::ClassId, VRL_L("my::CTick"), &NewObject<CTick>});
#pragma once

#include <vorlund/Object.h>
#include <vorlund/ObjectServices.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorlund {

/// True when `interfaceId` is that of `TInterface` or of an interface that it derives from, most derived
/// first.
template <class TInterface> bool IsInChain(const CId& interfaceId) {
    if (interfaceId == TInterface::InterfaceId) return true;
    if constexpr (std::is_void_v<typename TInterface::TBase>) {
        return false;
    } else {
        return IsInChain<typename TInterface::TBase>(interfaceId);
    }
}

/// Serial number, reference count and listeners of an object that implements `TInterface`. It takes no number
/// and tells no listener: the final class does both, because only it knows when the object is whole.
template <class TInterface> class CObjectImpl : public TInterface {
public:
    using TMainInterface = TInterface;

    int AddRef() override {
        CheckThread();
        return ++references_;
    }
    // The final class overrides these three. They answer only while it is not there: in the constructors,
    // which may hand out the object, and while the members are destroyed, whose own listeners may still hold
    // it.
    int Release() override {
        CheckThread();
        return --references_;
    }
    IObject* QueryInterface(const CId&) override { return nullptr; }
    CId GetClassId() override { return CId::Null(); }
    void AddListener(IObjectListener* listener) override { listeners_.push_back(listener); }
    void RemoveListener(IObjectListener* listener) override {
        // While the listeners are being told, positions must not move.
        if (isDying_) {
            std::replace(listeners_.begin(), listeners_.end(), listener,
                         static_cast<IObjectListener*>(nullptr));
        } else {
            std::erase(listeners_, listener);
        }
    }
    int GetObjectNumber() override { return number_; }

    CObjectImpl(const CObjectImpl&) = delete;
    CObjectImpl& operator=(const CObjectImpl&) = delete;

protected:
    CObjectImpl() = default;
    ~CObjectImpl() = default;

    /// Tells the listeners in the order in which they were added; those added meanwhile are left out.
    void TellListeners() {
        const std::size_t count = listeners_.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (listeners_[i]) listeners_[i]->OnObjectDestroyed(this);
        }
    }

    /// Gives back what may call this object once more when it is released, while the object is whole. A layer
    /// that holds such things has a `GiveBack` of its own, which hides this one. Since version 0.1.
    void GiveBack() {}

    /// Comes before every count. In a program and a library that are built with `VORLUND_CHECK_THREADS` it
    /// prints a debug message when an object with several references is counted by another thread than
    /// before; otherwise it is nothing. Since version 0.1.
    void CheckThread() {
#ifdef VORLUND_CHECK_THREADS
        services::OnCount(countingThread_, references_, number_, this->GetClassId());
#endif
    }

    int number_ = 0;
    int references_ = 1;
    std::vector<IObjectListener*> listeners_;
    /// Set once the destruction has begun: a listener that queries and releases the object starts no second
    /// one.
    bool isDying_ = false;

private:
#ifdef VORLUND_CHECK_THREADS
    std::atomic<unsigned int> countingThread_ = services::ThreadNumber();
#endif
};

/// The final class derived from `TClass`: numbers the object when it is whole, answers for its identity, and
/// destroys it. Applications use `NewObject`.
template <class TClass> class CFinalObject final : public TClass {
public:
    /// Raises `CBugException` "Not initialized" while the library is closed.
    CFinalObject() { this->number_ = services::OnCreateObject(TClass::ClassId); }
    /// The same with arguments for the class.
    template <class... TArguments>
    requires(sizeof...(TArguments) > 0) explicit CFinalObject(TArguments&&... arguments)
        : TClass(std::forward<TArguments>(arguments)...) {
        this->number_ = services::OnCreateObject(TClass::ClassId);
    }

    int Release() override {
        this->CheckThread();
        if (--this->references_ > 0 || this->isDying_) return this->references_;
        this->isDying_ = true;
        delete this;
        return 0;
    }
    IObject* QueryInterface(const CId& interfaceId) override {
        if (!IsInChain<typename TClass::TMainInterface>(interfaceId)) return nullptr;
        this->AddRef();
        return this;
    }
    CId GetClassId() override { return TClass::ClassId; }

private:
    /// Raises what a listener raises, `CBugException` "Not initialized" while the library is closed, and what
    /// `GiveBack` raises; the members are destroyed and the memory is freed all the same.
    ~CFinalObject() noexcept(false) {
        this->TellListeners();
        services::OnDestroyObject(TClass::ClassId);
        this->GiveBack();
    }
};

/// The factory of `TClass`: a new object with one reference, which the caller owns (`MakeObject` of
/// MakeObject.h returns an owner, and takes arguments). Raises `std::bad_alloc`, what the constructor raises,
/// and `CBugException` "Not initialized" while the library is closed.
template <class TClass> IObject* NewObject() {
    return new CFinalObject<TClass>;
}

} // namespace vorlund
