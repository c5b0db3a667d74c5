// The common base of clips and bitmaps.
#pragma once

#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>

namespace vorlund {

/// A new resource, made through the class store. Raises `CBugException` "Cannot create resource".
CRefPtr<IResource> NewHeldResource();

/// A resource that hands everything on to one of its own, made on first use.
template <class TInterface> class CResourceHolder : public CObjectImpl<TInterface> {
public:
    void ApplyFilter(IInputStreamFilter* filter) override { Held().ApplyFilter(filter); }
    std::uint32_t GetModificationCount() override { return Held().GetModificationCount(); }
    const TDataFormat* GetFormat() override { return Held().GetFormat(); }
    std::uint64_t GetSize() override { return Held().GetSize(); }
    void LoadDecoded(const CInputStreamSelector& source) override { Held().LoadDecoded(source); }
    void Load(const CInputStreamSelector& source) override { Held().Load(source); }
    void* Lock(TLockMode mode) override { return Held().Lock(mode); }
    // Kept for existing callers: nothing fixes the format of clips and bitmaps.
    void LockFormat() override {}
    void Save(const COutputStreamSelector& target, bool raw) override { Held().Save(target, raw); }
    void SetFormat(const TDataFormat* format) override { Held().SetFormat(format); }
    void SetSize(std::uint64_t size) override { Held().SetSize(size); }
    void Unlock() override { Held().Unlock(); }

protected:
    CResourceHolder() = default;
    ~CResourceHolder() noexcept(false) = default;

    IResource& Held() {
        if (!resource_) resource_ = NewHeldResource();
        return *resource_;
    }

private:
    CRefPtr<IResource> resource_;
};

} // namespace vorlund
