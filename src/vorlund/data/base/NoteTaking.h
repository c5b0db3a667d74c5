// Who takes the notes of DecodeNotes.h, and what streams have read meanwhile. One taker at a time for each
// thread: the candidate that a search is connecting.
#pragma once

#include <vorlund/Platform.h>

#include <atomic>
#include <cstdint>

namespace vorlund::notes {

/// The notes of one candidate.
struct TNotes {
    wstring container;
    wstring values;
    wstring remarks;
    std::uint64_t bytesRead = 0;
};

/// Takes the notes of the calling thread for the length of a block; an inner taker instead of the outer one.
class CTaker {
public:
    /// Null: nobody takes them meanwhile.
    explicit CTaker(TNotes* notes) noexcept;
    CTaker(const CTaker&) = delete;
    CTaker& operator=(const CTaker&) = delete;
    ~CTaker();

private:
    TNotes* const outer_;
};

/// The number of takers of all threads. While it is 0, nothing else is asked.
extern constinit std::atomic<int> takers;

void AddBytesRead(std::uint64_t count) noexcept;

/// For the streams at the beginning of a chain, which tell what they have delivered.
inline void CountBytesRead(std::uint64_t count) noexcept {
    if (takers.load(std::memory_order_relaxed) != 0) AddBytesRead(count);
}

} // namespace vorlund::notes
