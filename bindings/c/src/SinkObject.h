// What the handles of output streams stand for.
#pragma once

#include "Handles.h"

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <memory>
#include <utility>

namespace vorlund::capi {

class CSinkObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Sink;

    explicit CSinkObject(CRefPtr<IOutputStream> stream)
        : CSinkObject(std::move(stream), nullptr, std::make_shared<CChain>()) {}
    /// A stream that was made from another object, which stays as long as this one.
    CSinkObject(CRefPtr<IOutputStream> stream, std::shared_ptr<CHandleObject> parent)
        : CSinkObject(std::move(stream), parent, parent->GetChain()) {}
    CSinkObject(CRefPtr<IOutputStream> stream, std::shared_ptr<CHandleObject> parent,
                std::shared_ptr<CChain> chain)
        : CHandleObject(Kind), parent_(std::move(parent)), stream_(std::move(stream)) {
        chain_ = std::move(chain);
    }

    IOutputStream& Get() const { return *stream_; }
    CRefPtr<IOutputStream> Share() const { return stream_.Share(); }

private:
    std::shared_ptr<CHandleObject> parent_;
    CSafeRefPtr<IOutputStream> stream_;
};

} // namespace vorlund::capi
