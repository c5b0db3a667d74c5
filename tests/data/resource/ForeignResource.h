/// \file
/// A resource that is not the library's.
#pragma once

#include "support/Streams.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Resource.h>

namespace vorlund::test {

/// Holds its bytes in a vector and checks that they are only touched while its lock is held. `TIdentity` has
/// the identifier that it claims.
template <class TIdentity> class CForeignResourceAs : public CObjectImpl<IResource> {
public:
    static constexpr CId ClassId = TIdentity::ClassId;

    TBytes bytes;
    CFormatCopy format;
    /// What the resource pretends when it has no data.
    std::uint64_t sizeWithoutData = 0;
    /// Sizes above this get no data.
    std::uint64_t maximumSize = 1 << 20;
    /// Modes of the locks that are held.
    std::vector<TLockMode> locks;
    /// Modes of all locks so far.
    std::vector<TLockMode> locksTaken;
    int sizeChanges = 0;

    void ApplyFilter(IInputStreamFilter*) override {}
    std::uint32_t GetModificationCount() override { return 0; }
    const TDataFormat* GetFormat() override { return &format.Get(); }
    std::uint64_t GetSize() override { return bytes.empty() ? sizeWithoutData : bytes.size(); }
    void LoadDecoded(const CInputStreamSelector&) override {}
    void Load(const CInputStreamSelector&) override {}
    void* Lock(TLockMode mode) override {
        locks.push_back(mode);
        locksTaken.push_back(mode);
        return bytes.empty() ? nullptr : bytes.data();
    }
    void LockFormat() override {}
    void Save(const COutputStreamSelector&, bool) override {}
    void SetFormat(const TDataFormat* newFormat) override { format.Set(*newFormat); }
    void SetSize(std::uint64_t size) override {
        ++sizeChanges;
        // Another block, so that pointers into the former one show, and nothing is kept.
        bytes = TBytes();
        sizeWithoutData = size;
        if (size <= maximumSize) bytes = TBytes(static_cast<std::size_t>(size), 0xCD);
    }
    void Unlock() override { locks.pop_back(); }

private:
    CLiveObject live_;
};

struct TForeignIdentity {
    static constexpr CId ClassId{0x7E57F0E1, 0x2A4C6E80, 0x13579BDF, 0x52E50001};
};
using CForeignResource = CForeignResourceAs<TForeignIdentity>;

/// One that an application has registered in the place of the library's own.
struct TReplacedIdentity {
    static constexpr CId ClassId = classid::CResource;
};
using CReplacedResource = CForeignResourceAs<TReplacedIdentity>;

} // namespace vorlund::test
