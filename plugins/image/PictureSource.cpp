#include "PictureSource.h"

#include <algorithm>
#include <utility>

using namespace vorlund;

namespace {

constexpr std::size_t kBlockSize = 16 * 1024;

} // namespace

CPictureSource::CPictureSource(IInputStream& stream)
    : stream_(stream), length_(stream.GetLength()), buffer_(kBlockSize) {
    try {
        stream_.Seek(0);
    } catch (...) {
        failure_ = std::current_exception();
    }
    Fill();
}

bool CPictureSource::Fill() noexcept {
    if (!block_.empty()) return true;
    if (failure_) return false;
    std::size_t filled = 0;
    try {
        // A stream may deliver less than it was asked for before its end.
        while (filled < buffer_.size()) {
            const std::uint64_t count = stream_.Read(buffer_.data() + filled, buffer_.size() - filled);
            if (count == 0 || count > buffer_.size() - filled) break;
            filled += static_cast<std::size_t>(count);
        }
    } catch (...) {
        failure_ = std::current_exception();
        return false;
    }
    block_ = {buffer_.data(), filled};
    return filled > 0;
}

bool CPictureSource::ReadWhole(std::uint8_t* buffer, std::size_t size) noexcept {
    while (size > 0) {
        if (!Fill()) return false;
        const std::size_t count = std::min(size, block_.size());
        std::copy_n(block_.begin(), count, buffer);
        block_ = block_.subspan(count);
        buffer += count;
        size -= count;
    }
    return true;
}

std::span<const std::uint8_t> CPictureSource::ReadBlock() noexcept {
    Fill();
    return std::exchange(block_, {});
}

void CPictureSource::RethrowFailure() {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}
