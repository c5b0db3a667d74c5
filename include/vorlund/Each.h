/// \file
/// Range-for over the lists and enumerators of the library:
///
///     for (const CRefPtr<IFile>& file : Each<IFile>(folder->EnumerateFiles())) ...
///     for (const TDeviceClassInfo& device :
///     EachRecord<TDeviceClassInfo>(v.GetDeviceClassStore().EnumerateDevices())) ...
#pragma once

#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include <cstddef>
#include <iterator>

namespace vorlund {

/// What is left of an enumerator, once through, as objects of one interface. Since version 0.1.
template <class TInterface> class CEach {
public:
    class CIterator {
    public:
        using value_type = CRefPtr<TInterface>;
        using difference_type = std::ptrdiff_t;

        explicit CIterator(CEach& each) : each_(&each) { ++*this; }
        const CRefPtr<TInterface>& operator*() const { return each_->current_; }
        const CRefPtr<TInterface>* operator->() const { return &each_->current_; }
        CIterator& operator++() {
            each_->Next();
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t) const { return !each_->current_; }

    private:
        CEach* each_;
    };

    explicit CEach(CRefPtr<IObjectEnumerator> objects) : objects_(std::move(objects)) {}

    CIterator begin() { return CIterator(*this); }
    static std::default_sentinel_t end() { return {}; }

private:
    /// Goes to the next object that has the interface.
    void Next() {
        current_.Reset();
        while (objects_ && !current_) {
            const auto object = CRefPtr<IObject>::Adopt(objects_->GetNext());
            if (!object) return;
            current_ = object.template Query<TInterface>();
        }
    }

    CRefPtr<IObjectEnumerator> objects_;
    CRefPtr<TInterface> current_;
};

/// The objects of an enumerator that implement `TInterface`, the others passed over. Takes over the reference
/// that the caller holds, so the result of an operation can be given as it is; null is empty. Raises what
/// `GetNext` raises. Since version 0.1.
template <class TInterface> CEach<TInterface> Each(IObjectEnumerator* objects) {
    return CEach<TInterface>(CRefPtr<IObjectEnumerator>::Adopt(objects));
}

/// The same for the members that a list has now. Takes over the reference. Since version 0.1.
template <class TInterface> CEach<TInterface> Each(IObjectList* list) {
    const auto held = CRefPtr<IObjectList>::Adopt(list);
    return Each<TInterface>(held ? held->EnumerateObjects() : nullptr);
}

/// The same for a list that the caller keeps. Since version 0.1.
template <class TInterface> CEach<TInterface> Each(const CRefPtr<IObjectList>& list) {
    return Each<TInterface>(list ? list->EnumerateObjects() : nullptr);
}

/// The records that the stores hand out in `IPtrObject`s. Since version 0.1.
template <class TRecord> class CEachRecord {
public:
    class CIterator {
    public:
        using value_type = TRecord;
        using difference_type = std::ptrdiff_t;

        explicit CIterator(typename CEach<IPtrObject>::CIterator pointer) : pointer_(pointer) {}
        const TRecord& operator*() const { return *static_cast<const TRecord*>((*pointer_)->GetPtr()); }
        const TRecord* operator->() const { return &**this; }
        CIterator& operator++() {
            ++pointer_;
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t end) const { return pointer_ == end; }

    private:
        typename CEach<IPtrObject>::CIterator pointer_;
    };

    explicit CEachRecord(CEach<IPtrObject> pointers) : pointers_(std::move(pointers)) {}

    CIterator begin() { return CIterator(pointers_.begin()); }
    static std::default_sentinel_t end() { return {}; }

private:
    CEach<IPtrObject> pointers_;
};

/// The records behind a list or an enumerator of `IPtrObject`s, which the operation that made it says are
/// `TRecord`s. Takes over the reference. Since version 0.1.
template <class TRecord, class TSequence> CEachRecord<TRecord> EachRecord(TSequence* pointers) {
    return CEachRecord<TRecord>(Each<IPtrObject>(pointers));
}

} // namespace vorlund
