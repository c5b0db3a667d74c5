#include "VirtualFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

using namespace vorlund;

namespace {

CVirtualFile& File(void* user) {
    return *static_cast<CVirtualFile*>(user);
}

sf_count_t GetLength(void* user) {
    return File(user).GetLength();
}

sf_count_t Seek(sf_count_t offset, int whence, void* user) {
    CVirtualFile& file = File(user);
    std::int64_t base = 0;
    if (whence == SEEK_CUR) base = file.GetPosition();
    if (whence == SEEK_END) base = file.GetLength();
    std::int64_t position = 0;
    if (__builtin_add_overflow(base, offset, &position)) return -1;
    return file.Seek(position);
}

sf_count_t Read(void* buffer, sf_count_t count, void* user) {
    return File(user).Read(buffer, count);
}

sf_count_t Write(const void*, sf_count_t, void*) {
    return 0;
}

sf_count_t Tell(void* user) {
    return File(user).GetPosition();
}

} // namespace

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
    static SF_VIRTUAL_IO callbacks{&::GetLength, &::Seek, &::Read, &::Write, &::Tell};
    return &callbacks;
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
