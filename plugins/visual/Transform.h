// The power of sound at each frequency.
#pragma once

#include "Sound.h"

#include <memory>
#include <vector>

class CTransform {
public:
    /// \param size  a power of two
    explicit CTransform(std::size_t size);
    ~CTransform();

    /// The powers from 0 to half of the sample rate, size / 2 + 1 of them: the highest of all channels, 1 for
    /// a sine of full scale. The window of Hann, around the centre of the sound.
    const std::vector<double>& Apply(const TSound& sound);

private:
    struct TPlan;

    const std::size_t size_;
    std::unique_ptr<TPlan> plan_;
    std::vector<double> window_;
    std::vector<double> windowed_;
    std::vector<double> powers_;
};
