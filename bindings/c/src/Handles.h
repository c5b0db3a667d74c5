// Handles: numbers that stand for objects. Each is a place in a table and how often that place was used, so
// that a handle that was freed is told from the next one at its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vorlund::capi {

enum class TKind : unsigned char {
    Free,
    Stream,
    Sink,
    Report,
    Writer,
    Resource,
    DeviceList,
    Output,
    Input,
    Object,
    Event,
};

class CChain;
class CPostponed;

/// What a handle stands for. It lives as long as its handle, an operation on it, or what was made from it.
class CHandleObject {
public:
    explicit CHandleObject(TKind kind) : kind_(kind) {}
    CHandleObject(const CHandleObject&) = delete;
    CHandleObject& operator=(const CHandleObject&) = delete;
    virtual ~CHandleObject() = default;

    TKind GetKind() const { return kind_; }
    /// Null for objects that any number of threads may use.
    const std::shared_ptr<CChain>& GetChain() const { return chain_; }

protected:
    std::shared_ptr<CChain> chain_;

private:
    friend class CChain;
    friend class CPostponed;
    class CPostponed;
    const TKind kind_;
    std::shared_ptr<CHandleObject> nextDropped_;
    bool isDropped_ = false;
};

/// Objects of which one is used at a time: a stream and what was made from it, because they count each
/// other's references and move each other's positions.
class CChain {
public:
    /// Begins an operation; false when another one is under way.
    bool Begin() noexcept;
    /// Ends it, and destroys what was dropped meanwhile.
    void End() noexcept;
    /// Destroys an object, unless an operation is under way: then when that ends.
    void Drop(std::shared_ptr<CHandleObject> object) noexcept;

private:
    std::mutex mutex_;
    bool isBusy_ = false;
    std::shared_ptr<CHandleObject> dropped_;
};

/// The handle of a new object. Raises `std::bad_alloc`.
void* NewHandle(std::shared_ptr<CHandleObject> object);
/// The object of a handle. Raises `CFailure` with VORLUND_ERROR_HANDLE.
std::shared_ptr<CHandleObject> FindHandle(const void* handle, TKind kind);
/// Takes a handle out of the table. The object is given back; raises as `FindHandle`.
std::shared_ptr<CHandleObject> TakeHandle(const void* handle);
/// Takes a handle out of the table whose object others go on using; nothing when it is there no more.
void ForgetHandle(const void* handle) noexcept;
/// Frees all handles, the newest first.
void FreeAllHandles() noexcept;
std::uint32_t CountHandles();

/// Destroys what is no longer needed, when its chain allows it. What has threads of its own waits for those,
/// and so it is not destroyed by one of them: that is postponed.
void Drop(std::shared_ptr<CHandleObject> object) noexcept;
/// Destroys what was postponed. Not for threads of the library.
void DropPostponed() noexcept;

/// The object of a handle as its class.
template <class TObject> std::shared_ptr<TObject> Find(const void* handle) {
    return std::static_pointer_cast<TObject>(FindHandle(handle, TObject::Kind));
}

/// A new object with its handle in `*result`.
template <class TObject, class THandle, class... TArguments>
void MakeHandle(THandle* result, TArguments&&... arguments) {
    *result =
        static_cast<THandle>(NewHandle(std::make_shared<TObject>(std::forward<TArguments>(arguments)...)));
}

[[noreturn]] void RaiseBusy();

/// An object for the length of an operation, which is the only one on its chain.
template <class TObject> class CUse {
public:
    explicit CUse(const void* handle) : CUse(Find<TObject>(handle)) {}
    explicit CUse(std::shared_ptr<TObject> object) : object_(std::move(object)), chain_(object_->GetChain()) {
        if (!chain_ || chain_->Begin()) return;
        chain_->Drop(std::move(object_));
        RaiseBusy();
    }
    CUse(const CUse&) = delete;
    CUse& operator=(const CUse&) = delete;
    ~CUse() {
        // Where the handle was freed meanwhile, this is the last reference.
        if (!chain_) {
            capi::Drop(std::move(object_));
            return;
        }
        chain_->Drop(std::move(object_));
        chain_->End();
    }

    TObject* operator->() const { return object_.get(); }
    TObject& operator*() const { return *object_; }
    const std::shared_ptr<TObject>& Share() const { return object_; }

private:
    std::shared_ptr<TObject> object_;
    std::shared_ptr<CChain> chain_;
};

} // namespace vorlund::capi
