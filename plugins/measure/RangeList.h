// Runs of frames that something is true of, and the ranges that they make.
#pragma once

#include <vorlund/AudioMeter.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// Ranges in order of their beginnings; what touches the last is added to it.
class CRangeList {
public:
    void Add(std::uint64_t first, std::uint64_t count) {
        const std::uint64_t end = first + count;
        const std::uint64_t lastEnd = last_.first + last_.count;
        if (last_.count > 0 && first <= lastEnd) {
            last_.count = std::max(lastEnd, end) - last_.first;
            return;
        }
        if (last_.count > 0 && earlier_.size() < vorlund::IAudioMeter::kMaxRanges) earlier_.push_back(last_);
        last_ = {first, count};
    }

    /// The number of those that are kept; as many as there is room for are copied.
    std::size_t Get(vorlund::TFrameRange* ranges, std::size_t room) const {
        const std::size_t copied = std::min(room, earlier_.size());
        std::copy_n(earlier_.begin(), copied, ranges);
        if (last_.count == 0 || earlier_.size() == vorlund::IAudioMeter::kMaxRanges) return earlier_.size();
        if (copied < room) ranges[copied] = last_;
        return earlier_.size() + 1;
    }

private:
    std::vector<vorlund::TFrameRange> earlier_;
    vorlund::TFrameRange last_ = {};
};

// Counts what is true of frames one behind the other, and tells of runs that are long enough.
class CRunFinder {
public:
    explicit CRunFinder(std::uint32_t shortest) : shortest_(shortest) {}

    void Count(bool isTrue, std::uint64_t frame, CRangeList& ranges) {
        if (!isTrue) {
            run_ = 0;
            return;
        }
        if (++run_ < shortest_) return;
        const std::uint64_t added = run_ == shortest_ ? run_ : 1;
        total_ += added;
        ranges.Add(frame + 1 - added, added);
    }

    /// Frames in runs that are long enough.
    std::uint64_t GetTotal() const { return total_; }

private:
    std::uint32_t shortest_;
    std::uint64_t run_ = 0;
    std::uint64_t total_ = 0;
};
