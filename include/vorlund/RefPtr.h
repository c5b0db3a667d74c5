/// \file
/// Owners of references to `IObject`s: `CRefPtr` for one, `CReferenceList` for many, `CSafeRefPtr` for
/// containers, and `CreateAs`.
///
/// Releasing may raise: the last release of an object after `v.Close()` does. So the destructors here may
/// raise too. While another exception is in flight they drop what a release raises, which the debugger output
/// has then already shown.
///
/// \warning Never hold a `CRefPtr` in a standard container or in `std::unique_ptr`: a destructor that raises
/// there ends the process or leaks the rest. For several objects there is `CReferenceList`, and for
/// containers `CSafeRefPtr`.
#pragma once

#include <vorlund/Object.h>
#include <vorlund/ObjectServices.h>

#include <concepts>
#include <cstddef>
#include <exception>
#include <utility>
#include <vector>

namespace vorlund {

/// Releases one reference, null allowed, from inside a destructor: raises only where that does not end the
/// process.
inline void ReleaseInDestructor(IObject* object) {
    if (!object) return;
    if (std::uncaught_exceptions() == 0) {
        object->Release();
        return;
    }
    try {
        object->Release();
    } catch (...) {
        // Already reported when it was built; a second exception in flight would end the process.
    }
}

/// Owns one reference to an object, or nothing. One thread at a time. Not for standard containers: see above.
///
/// \code{.cpp}
/// {
///     const auto decoder = CreateAs<IInputStream>(classid::CWavDecoder); // one reference, in a CRefPtr
///     const auto second = CRefPtr<IInputStream>::Share(decoder.Get());   // one more
///     const auto list = decoder.Query<IObjectList>();                    // null: it is none
///     std::printf("%d\n", static_cast<bool>(list));                      // prints 0
/// } // both references are given back, and the decoder ends
/// \endcode
template <class TInterface> class CRefPtr {
public:
    CRefPtr() = default;

    /// Takes over a reference that the caller holds.
    static CRefPtr Adopt(TInterface* object) { return CRefPtr(object); }

    /// Adds a reference of its own; null is allowed.
    static CRefPtr Share(TInterface* object) {
        if (object) object->AddRef();
        return CRefPtr(object);
    }

    CRefPtr(const CRefPtr& other) : CRefPtr(Share(other.object_)) {}
    CRefPtr(CRefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// As an interface or a class that the held one derives from. Since version 0.1.
    template <class TDerived>
    requires(std::convertible_to<TDerived*, TInterface*> && !std::same_as<TDerived, TInterface>)
        CRefPtr(CRefPtr<TDerived> other)
        : object_(other.Detach()) {}
    CRefPtr& operator=(CRefPtr other) {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CRefPtr() noexcept(false) { ReleaseInDestructor(object_); }

    /// Gives the reference to the caller.
    [[nodiscard]] TInterface* Detach() { return std::exchange(object_, nullptr); }

    /// Releases what is held now.
    void Reset() {
        if (TInterface* const object = Detach()) object->Release();
    }

    /// The object without a reference, valid while this holds it.
    TInterface* Get() const { return object_; }
    TInterface* operator->() const { return object_; }
    TInterface& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

    /// Whether both hold the same object, or nothing. Since version 0.1.
    template <class TOther> bool operator==(const CRefPtr<TOther>& other) const {
        return object_ == other.Get();
    }
    bool operator==(std::nullptr_t) const { return !object_; }

    /// The object as another interface, empty when it has none of that identifier.
    template <class TOther> CRefPtr<TOther> Query() const {
        if (!object_) return {};
        return CRefPtr<TOther>::Adopt(static_cast<TOther*>(object_->QueryInterface(TOther::InterfaceId)));
    }

private:
    explicit CRefPtr(TInterface* object) : object_(object) {}

    TInterface* object_ = nullptr;
};

/// Owns one reference to an object, or nothing, and never raises: what the last release raises is dropped,
/// after the debugger output has shown it. So it may be held in standard containers and by values that are.
/// One thread at a time. Since version 0.1.
template <class TInterface> class CSafeRefPtr {
public:
    CSafeRefPtr() = default;
    /// Takes over what `object` holds.
    template <class TDerived>
    requires std::convertible_to<TDerived*, TInterface*> CSafeRefPtr(CRefPtr<TDerived> object)
        : object_(object.Detach()) {}

    CSafeRefPtr(const CSafeRefPtr& other) : object_(other.object_) {
        if (object_) object_->AddRef();
    }
    CSafeRefPtr(CSafeRefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CSafeRefPtr& operator=(CSafeRefPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CSafeRefPtr() {
        try {
            if (object_) object_->Release();
        } catch (...) {
            // Reported when it was built.
        }
    }

    /// One more reference, in the form that raises.
    CRefPtr<TInterface> Share() const { return CRefPtr<TInterface>::Share(object_); }

    TInterface* Get() const { return object_; }
    TInterface* operator->() const { return object_; }
    TInterface& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    bool operator==(const CSafeRefPtr& other) const = default;
    bool operator==(std::nullptr_t) const { return !object_; }

private:
    TInterface* object_ = nullptr;
};

/// Owns one reference to each of its members, in order. One thread at a time.
template <class TInterface> class CReferenceList {
public:
    CReferenceList() = default;
    CReferenceList(const CReferenceList&) = delete;
    CReferenceList& operator=(const CReferenceList&) = delete;
    ~CReferenceList() noexcept(false) {
        if (std::uncaught_exceptions() == 0) {
            Clear();
            return;
        }
        for (TInterface* const member : std::exchange(members_, {})) ReleaseInDestructor(member);
    }

    /// Appends a reference that the caller holds. Raises `std::bad_alloc`; the caller then still holds it.
    void Adopt(TInterface* object) { members_.push_back(object); }

    /// Appends `object`, which must not be null, with a reference of its own. Raises `std::bad_alloc`.
    void Share(TInterface* object) {
        members_.push_back(object);
        object->AddRef();
    }

    /// Releases every member in order, all of them even when some raise; the first exception then passes on.
    void Clear() {
        std::exception_ptr first;
        for (TInterface* const member : std::exchange(members_, {})) {
            try {
                member->Release();
            } catch (...) {
                if (!first) first = std::current_exception();
            }
        }
        if (first) std::rethrow_exception(first);
    }

    /// Removes the member at `index`, which must be below `GetCount()`, and releases it.
    void Remove(std::size_t index) {
        TInterface* const member = members_[index];
        members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(index));
        member->Release();
    }

    /// Reserves room for `count` members in all. Raises `std::bad_alloc`.
    void Reserve(std::size_t count) { members_.reserve(count); }
    std::size_t GetCount() const { return members_.size(); }
    TInterface* operator[](std::size_t index) const { return members_[index]; }
    auto begin() const { return members_.begin(); }
    auto end() const { return members_.end(); }

private:
    std::vector<TInterface*> members_;
};

/// Creates an object of class `classId` through `v`'s class store and queries it for `TInterface`. Empty when
/// the factory yields nothing or the object lacks the interface. Raises what the class store raises.
template <class TInterface> CRefPtr<TInterface> CreateAs(const CId& classId) {
    return CRefPtr<IObject>::Adopt(services::CreateObject(classId)).template Query<TInterface>();
}

} // namespace vorlund
