// Reading a resource.
#pragma once

#include "vorlund/data/base/Lending.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

class CResourceIs : public CInputStreamImpl<IResourceIs>, public ILendingInput {
public:
    static constexpr CId ClassId = classid::CResourceIs;

    void Close() override;
    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;

    bool Eof() override;
    const TDataFormat& GetFormat() override;
    void Read(IMediaSample* sample) override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override;

    void SetResource(IResource* resource) override;

protected:
    ~CResourceIs() noexcept(false) = default;

private:
    CRefPtr<IResource> resource_;
    std::uint64_t position_ = 0;
};

} // namespace vorlund
