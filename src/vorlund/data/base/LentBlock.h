// A buffer in the hands of a stream that reads into it.
#pragma once

#include <vorlund/StreamFilterImpl.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace vorlund {

/// Takes a block from its owner for the length of a call of the stream, which may use or destroy the owner
/// meanwhile: the block outlives the owner, and goes back to one that lives.
class CLentBlock {
public:
    CLentBlock(CFilterCalls& calls, std::unique_ptr<std::uint8_t[]>& place)
        : call_(calls), place_(place), block_(std::move(place)) {}
    CLentBlock(const CLentBlock&) = delete;
    CLentBlock& operator=(const CLentBlock&) = delete;
    ~CLentBlock() {
        if (call_.IsAlive()) place_ = std::move(block_);
    }

    std::uint8_t* Get() const { return block_.get(); }
    bool IsUnchanged() const { return call_.IsUnchanged(); }

private:
    const CFilterCalls::CCall call_;
    std::unique_ptr<std::uint8_t[]>& place_;
    std::unique_ptr<std::uint8_t[]> block_;
};

} // namespace vorlund
