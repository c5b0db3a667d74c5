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

/// The sum of the samples, each divided by `divisor`, from left to right.
template <class TSample, class... TSamples>
TSample Sum(typename TTraits<TSample>::TTerm divisor, TSample first, TSamples... others) {
    using TTerm = typename TTraits<TSample>::TTerm;
    TTerm sum = static_cast<TTerm>(first) / divisor;
    ((sum += static_cast<TTerm>(others) / divisor), ...);
    return static_cast<TSample>(sum);
}

template <std::uint32_t inputs, std::uint32_t outputs> struct TRule;

template <std::uint32_t outputs> struct TRule<1, outputs> {
    template <class TSample> static void Mix(TSample* out, const TSample* in) {
        for (std::uint32_t i = 0; i < outputs; ++i) out[i] = in[0];
    }
};

template <> struct TRule<2, 1> {
    template <class TSample> static void Mix(TSample* out, const TSample* in) {
        out[0] = Sum(2, in[0], in[1]);
    }
};

template <> struct TRule<2, 6> {
    template <class TSample> static void Mix(TSample* out, const TSample* in) {
        out[0] = in[0];
        out[1] = in[1];
        for (int i = 2; i < 6; ++i) out[i] = TTraits<TSample>::kSilence;
    }
};

template <> struct TRule<6, 1> {
    template <class TSample> static void Mix(TSample* out, const TSample* in) {
        // Kept on purpose: six silent bytes 0x80 give 0x7E.
        out[0] = Sum(6, in[0], in[1], in[2], in[3], in[4], in[5]);
    }
};

template <> struct TRule<6, 2> {
    template <class TSample> static void Mix(TSample* out, const TSample* in) {
        // Kept on purpose: the low-frequency channel weighs as much as the others.
        out[0] = Sum(4, in[0], in[2], in[3], in[4]);
        out[1] = Sum(4, in[1], in[2], in[3], in[5]);
    }
};

template <class TSample, std::uint32_t inputs, std::uint32_t outputs>
void Mix(void* destination, const void* source, std::size_t frames) {
    // Buffers belong to callers and may have any alignment.
    auto* to = static_cast<std::uint8_t*>(destination);
    const auto* from = static_cast<const std::uint8_t*>(source);
    for (; frames > 0; --frames) {
        TSample in[inputs];
        TSample out[outputs];
        std::memcpy(in, from, sizeof in);
        TRule<inputs, outputs>::Mix(out, in);
        std::memcpy(to, out, sizeof out);
        from += sizeof in;
        to += sizeof out;
    }
}

#define VRL_MIXES(inputs, outputs)                                                                           \
    {                                                                                                        \
        Mix<std::uint8_t, inputs, outputs>, Mix<std::int16_t, inputs, outputs>,                              \
            Mix<std::int32_t, inputs, outputs>, Mix<float, inputs, outputs>                                  \
    }

} // namespace

const TMixSet kScalarMixes{
    "scalar",
    [] { return true; },
    {VRL_MIXES(1, 2), VRL_MIXES(1, 6), VRL_MIXES(2, 1), VRL_MIXES(2, 6), VRL_MIXES(6, 1), VRL_MIXES(6, 2)}};

} // namespace vorlund::pcm
