#include "OutputFile.h"

#include "SoundCallbacks.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace vorlund;

COutputFile::COutputFile(IOutputStream& stream) : stream_(stream), start_(stream.Tell()) {}

SF_VIRTUAL_IO* COutputFile::GetCallbacks() {
    return GetSoundCallbacks<COutputFile>();
}

void COutputFile::RethrowFailure() {
    if (!failure_) return;
    isAbandoned_ = true;
    std::rethrow_exception(std::exchange(failure_, nullptr));
}

std::int64_t COutputFile::Seek(std::int64_t position) {
    if (position < 0) return -1;
    position_ = position;
    return position_;
}

std::int64_t COutputFile::Write(const void* buffer, std::int64_t count) {
    if (failure_ || isAbandoned_ || count < 0) return 0;
    try {
        if (stream_.Tell() != start_ + position_) stream_.Seek(start_ + position_);
        stream_.Write(buffer, static_cast<std::uint64_t>(count));
        KeepHead(buffer, count);
    } catch (...) {
        failure_ = std::current_exception();
        return 0;
    }
    position_ += count;
    length_ = std::max(length_, position_);
    return count;
}

void COutputFile::KeepHead(const void* buffer, std::int64_t count) {
    const std::int64_t end = std::min(position_ + count, kMaxHead);
    if (position_ >= end) return;
    if (head_.size() < static_cast<std::size_t>(end)) head_.resize(static_cast<std::size_t>(end));
    std::memcpy(&head_[static_cast<std::size_t>(position_)], buffer,
                static_cast<std::size_t>(end - position_));
}
