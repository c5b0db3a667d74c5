// How loud a sound is, for who shows it while it is heard.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

/// The greatest sample of these frames without its sign, 1 at full scale; 0 for none.
class CPeakFinder {
public:
    explicit CPeakFinder(const vorlund::TDataFormat_AudioPcm& format = {}) : format_(format) {}

    float Find(const void* samples, std::size_t frames);

private:
    vorlund::TDataFormat_AudioPcm format_;
    std::vector<float> floats_;
};

/// Peaks of a sound that one thread reads before another one's user hears it.
class CLevels {
public:
    /// Of what is added from now on.
    void SetFormat(const vorlund::TDataFormat_AudioPcm& format);
    /// The sound goes on at the frame `first` with these.
    void Add(const void* samples, std::size_t frames, std::uint64_t first);
    /// The greatest peak of what comes before the frame `end` and was not asked for yet.
    float Take(std::uint64_t end);
    void Forget();

private:
    struct TPeak {
        std::uint64_t first;
        float peak;
    };

    CPeakFinder finder_;
    vorlund::TDataFormat_AudioPcm format_;
    std::mutex mutex_;
    std::deque<TPeak> peaks_;
};
