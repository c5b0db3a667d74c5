// The rules as they are written: the reference of the other sets.
#include "vorlund/data/filters/PcmMixes.h"

#include <cstring>

namespace vorlund::pcm {
namespace {

/// `TTerm` is the type in which terms are divided and added. No integer sum leaves the range of its samples.
template <class TSample> struct TTraits;
template <> struct TTraits<std::uint8_t> {
    using TTerm = std::uint32_t;
    static constexpr std::uint8_t kSilence = 0x80;
};
template <> struct TTraits<std::int16_t> {
    using TTerm = std::int32_t;
    static constexpr std::int16_t kSilence = 0;
};
template <> struct TTraits<std::int32_t> {
    using TTerm = std::int32_t;
    static constexpr std::int32_t kSilence = 0;
};
template <> struct TTraits<float> {
    using TTerm = double;
    static constexpr float kSilence = 0;
};

/// Interleaved samples in a caller's buffer, which may have any alignment.
template <class TSample> TSample Load(const std::uint8_t* frame, std::size_t channel) {
    TSample sample;
    std::memcpy(&sample, frame + channel * sizeof sample, sizeof sample);
    return sample;
}
template <class TSample> void Store(std::uint8_t* frame, std::size_t channel, TSample sample) {
    std::memcpy(frame + channel * sizeof sample, &sample, sizeof sample);
}

/// The sum of some channels, each divided by `divisor`, in the order given.
template <class TSample, std::size_t count>
TSample Sum(typename TTraits<TSample>::TTerm divisor, const std::uint8_t* frame,
            const std::size_t (&channels)[count]) {
    using TTerm = typename TTraits<TSample>::TTerm;
    TTerm sum = static_cast<TTerm>(Load<TSample>(frame, channels[0])) / divisor;
    for (std::size_t i = 1; i < count; ++i)
        sum += static_cast<TTerm>(Load<TSample>(frame, channels[i])) / divisor;
    return static_cast<TSample>(sum);
}

template <std::size_t inputs, std::size_t outputs> struct TRule;

template <std::size_t outputs> struct TRule<1, outputs> {
    template <class TSample> static void Mix(std::uint8_t* to, const std::uint8_t* from) {
        const auto sample = Load<TSample>(from, 0);
        for (std::size_t i = 0; i < outputs; ++i) Store(to, i, sample);
    }
};

template <> struct TRule<2, 1> {
    template <class TSample> static void Mix(std::uint8_t* to, const std::uint8_t* from) {
        Store(to, 0, Sum<TSample>(2, from, {0, 1}));
    }
};

template <> struct TRule<2, 6> {
    template <class TSample> static void Mix(std::uint8_t* to, const std::uint8_t* from) {
        Store(to, 0, Load<TSample>(from, 0));
        Store(to, 1, Load<TSample>(from, 1));
        for (std::size_t i = 2; i < 6; ++i) Store(to, i, TTraits<TSample>::kSilence);
    }
};

template <> struct TRule<6, 1> {
    template <class TSample> static void Mix(std::uint8_t* to, const std::uint8_t* from) {
        // Kept for callers: six silent bytes 0x80 give 0x7E.
        Store(to, 0, Sum<TSample>(6, from, {0, 1, 2, 3, 4, 5}));
    }
};

template <> struct TRule<6, 2> {
    template <class TSample> static void Mix(std::uint8_t* to, const std::uint8_t* from) {
        // Kept for callers: the low-frequency channel weighs as much as the others.
        Store(to, 0, Sum<TSample>(4, from, {0, 2, 3, 4}));
        Store(to, 1, Sum<TSample>(4, from, {1, 2, 3, 5}));
    }
};

template <class TSample, std::size_t inputs, std::size_t outputs>
void Mix(void* destination, const void* source, std::size_t frames) {
    auto* to = static_cast<std::uint8_t*>(destination);
    const auto* from = static_cast<const std::uint8_t*>(source);
    for (; frames > 0; --frames) {
        TRule<inputs, outputs>::template Mix<TSample>(to, from);
        from += inputs * sizeof(TSample);
        to += outputs * sizeof(TSample);
    }
}

#define VRL_MIXES(inputs, outputs)                                                                           \
    {                                                                                                        \
        Mix<std::uint8_t, inputs, outputs>, Mix<std::int16_t, inputs, outputs>,                              \
            Mix<std::int32_t, inputs, outputs>, Mix<float, inputs, outputs>                                  \
    }

} // namespace

constinit const TMixSet kScalarMixes{
    "scalar",
    [] { return true; },
    {VRL_MIXES(1, 2), VRL_MIXES(1, 6), VRL_MIXES(2, 1), VRL_MIXES(2, 6), VRL_MIXES(6, 1), VRL_MIXES(6, 2)}};

} // namespace vorlund::pcm
