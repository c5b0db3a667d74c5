// What the benchmarks of events need of the system.
#pragma once

#include <atomic>
#include <thread>

namespace vorlund::bench {

/// Keeps the calling thread on one processor for the length of a block, where the system can.
class CPlace {
public:
    explicit CPlace(int processor);
    CPlace(const CPlace&) = delete;
    CPlace& operator=(const CPlace&) = delete;
    ~CPlace();
};

/// Processor time that this process has used, in seconds.
double ProcessorSeconds();

/// Counts the ticks of a bare 1 ms multimedia timer that sets an event, as ours does, from its construction
/// on; 0 on systems without one.
class CBareTicks {
public:
    static const bool kIsThere;

    CBareTicks();
    CBareTicks(const CBareTicks&) = delete;
    CBareTicks& operator=(const CBareTicks&) = delete;
    ~CBareTicks();

    long Count() const { return count_; }

private:
    std::atomic<long> count_{0};
    std::atomic<bool> isOver_{false};
    std::thread counter_;
    void* tick_ = nullptr;
    unsigned int timer_ = 0;
};

} // namespace vorlund::bench
