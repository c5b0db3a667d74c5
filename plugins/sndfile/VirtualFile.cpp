#include "VirtualFile.h"

#include "SoundCallbacks.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace vorlund;

CVirtualFile::CVirtualFile(IInputStream& stream)
    : stream_(stream), length_(std::max<std::int64_t>(stream.GetLength(), 0)) {}

void CVirtualFile::Exchange(std::int64_t from, std::int64_t to, std::vector<std::uint8_t> bytes) {
    exchangedAt_ = from;
    exchanged_ = std::move(bytes);
    shift_ = to - from - static_cast<std::int64_t>(exchanged_.size());
    length_ -= shift_;
    position_ = 0;
}

SF_VIRTUAL_IO* CVirtualFile::GetCallbacks() {
    return GetSoundCallbacks<CVirtualFile>();
}

void CVirtualFile::RethrowFailure() {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

std::int64_t CVirtualFile::Seek(std::int64_t position) {
    if (position < 0) return -1;
    position_ = position;
    return position_;
}

std::int64_t CVirtualFile::Read(void* buffer, std::int64_t count) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    const std::int64_t wanted = std::min(count, std::max<std::int64_t>(length_ - position_, 0));
    std::int64_t total = 0;
    while (total < wanted) {
        const std::int64_t inside = position_ - exchangedAt_;
        const auto size = static_cast<std::int64_t>(exchanged_.size());
        std::int64_t got = 0;
        if (inside >= 0 && inside < size) {
            got = std::min(wanted - total, size - inside);
            std::memcpy(bytes + total, exchanged_.data() + inside, static_cast<std::size_t>(got));
        } else if (inside < 0 && !exchanged_.empty()) {
            got = ReadStream(bytes + total, position_, std::min(wanted - total, -inside));
        } else {
            got = ReadStream(bytes + total, position_ + shift_, wanted - total);
        }
        if (got <= 0) break;
        total += got;
        position_ += got;
    }
    // What lacks bytes is at its end: libsndfile's loops over chunks go by the position, and not by what was
    // read.
    if (total < wanted) position_ = length_;
    return total;
}

std::int64_t CVirtualFile::ReadStream(std::uint8_t* buffer, std::int64_t position, std::int64_t count) {
    if (failure_) return 0;
    try {
        if (stream_.Tell() != position) stream_.Seek(position);
        const std::uint64_t got = stream_.Read(buffer, static_cast<std::uint64_t>(count));
        return got > static_cast<std::uint64_t>(count) ? 0 : static_cast<std::int64_t>(got);
    } catch (...) {
        failure_ = std::current_exception();
        return 0;
    }
}
