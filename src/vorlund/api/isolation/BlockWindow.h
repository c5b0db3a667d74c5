// The block of a stream that is here, while the whole of it is in another process.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace vorlund::isolation {

class CBlockWindow {
public:
    void Clear(std::int64_t position) { Set(position, {}); }
    void Set(std::int64_t position, std::span<const std::uint8_t> bytes) {
        at_ = position;
        bytes_.assign(bytes.begin(), bytes.end());
    }
    /// Where the next block begins.
    std::int64_t GetEnd() const { return at_ + static_cast<std::int64_t>(bytes_.size()); }

    /// Copies from `position` on and moves it. `fetch()` sets the block at the position; an empty one is the
    /// end.
    template <class TFetch>
    std::uint64_t Read(std::int64_t& position, void* buffer, std::uint64_t size, TFetch fetch) {
        auto* const bytes = static_cast<std::uint8_t*>(buffer);
        std::uint64_t total = 0;
        while (total < size) {
            if (!Holds(position)) fetch();
            if (!Holds(position)) break;
            const auto inside = static_cast<std::size_t>(position - at_);
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(size - total, bytes_.size() - inside));
            std::memcpy(bytes + total, bytes_.data() + inside, count);
            total += count;
            position += static_cast<std::int64_t>(count);
        }
        return total;
    }

private:
    bool Holds(std::int64_t position) const { return position >= at_ && position < GetEnd(); }

    std::vector<std::uint8_t> bytes_;
    std::int64_t at_ = 0;
};

} // namespace vorlund::isolation
