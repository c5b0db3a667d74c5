// How loud a sound is, for who shows it while it is heard.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/// The greatest sample of these frames without its sign, 1 at full scale; 0 for none.
class CPeakFinder {
public:
    explicit CPeakFinder(const vorlund::TDataFormat_AudioPcm& format = {}) : format_(format) {}

    float Find(const void* samples, std::size_t frames);
    /// What the last call has looked at, interleaved.
    const std::vector<float>& GetSamples() const { return floats_; }

private:
    vorlund::TDataFormat_AudioPcm format_;
    std::vector<float> floats_;
};

/// A sound that one thread reads before another one's user hears it: its peaks, and the sound itself.
class CHeardSound {
public:
    using TSink = std::function<void(const float* samples, std::size_t frames)>;

    /// Of what is added from now on; with `areSamplesKept` for a sink.
    void SetFormat(const vorlund::TDataFormat_AudioPcm& format, bool areSamplesKept);
    /// The sound goes on at the frame `first` with these.
    void Add(const void* samples, std::size_t frames, std::uint64_t first);
    /// The greatest peak of what comes before the frame `end` and was not asked for yet. The sink, where
    /// there is one, is given that sound, interleaved, 1.0 at full scale.
    float Take(std::uint64_t end, const TSink& sink = {});
    void Forget();

private:
    struct TPiece {
        std::uint64_t first;
        float peak;
        /// Those that the sink has not had.
        std::vector<float> samples;
    };

    CPeakFinder finder_;
    vorlund::TDataFormat_AudioPcm format_;
    bool areSamplesKept_ = false;
    std::mutex mutex_;
    std::deque<TPiece> pieces_;
};
