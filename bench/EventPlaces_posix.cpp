#include "EventPlaces.h"

#include <ctime>
#include <pthread.h>

namespace vorlund::bench {

CPlace::CPlace(int processor) {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(static_cast<unsigned int>(processor) % std::thread::hardware_concurrency(), &processors);
    pthread_setaffinity_np(pthread_self(), sizeof processors, &processors);
}

CPlace::~CPlace() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    for (unsigned int processor = 0; processor < std::thread::hardware_concurrency(); ++processor)
        CPU_SET(processor, &processors);
    pthread_setaffinity_np(pthread_self(), sizeof processors, &processors);
}

double ProcessorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

const bool CBareTicks::kIsThere = false;
CBareTicks::CBareTicks() = default;
CBareTicks::~CBareTicks() = default;

} // namespace vorlund::bench
