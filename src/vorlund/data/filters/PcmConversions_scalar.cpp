// The rules as they are written: the reference of the other sets.
#include "vorlund/api/values/Arithmetic.h"
#include "vorlund/data/filters/PcmConversions.h"

#include <cstring>

namespace vorlund::pcm {
namespace {

using TU8 = std::uint8_t;
using TS16 = std::int16_t;
using TS32 = std::int32_t;

template <class TDestination, class TSource> struct TRule;
template <> struct TRule<TS16, TU8> {
    static TS16 Apply(TU8 s) { return static_cast<TS16>((s - 128) * 256); }
};
template <> struct TRule<TS32, TU8> {
    static TS32 Apply(TU8 s) { return (s - 128) * (1 << 24); }
};
template <> struct TRule<float, TU8> {
    static float Apply(TU8 s) { return static_cast<float>((s - 128) / 128.0); }
};
template <> struct TRule<TU8, TS16> {
    static TU8 Apply(TS16 s) { return static_cast<TU8>((s >> 8) + 128); }
};
template <> struct TRule<TS32, TS16> {
    static TS32 Apply(TS16 s) { return s * (1 << 16); }
};
template <> struct TRule<float, TS16> {
    static float Apply(TS16 s) { return static_cast<float>(s / 32768.0); }
};
template <> struct TRule<TU8, TS32> {
    static TU8 Apply(TS32 s) { return static_cast<TU8>((s >> 24) + 128); }
};
template <> struct TRule<TS16, TS32> {
    static TS16 Apply(TS32 s) { return static_cast<TS16>(s >> 16); }
};
template <> struct TRule<float, TS32> {
    static float Apply(TS32 s) { return static_cast<float>(s / 2147483648.0); }
};
template <> struct TRule<TU8, float> {
    static TU8 Apply(float s) {
        return static_cast<TU8>(TruncateToInt32((static_cast<double>(s) + 1.0) * 127.5));
    }
};
template <> struct TRule<TS16, float> {
    static TS16 Apply(float s) {
        return static_cast<TS16>(TruncateToInt32(static_cast<double>(s) * 32767.0));
    }
};
template <> struct TRule<TS32, float> {
    // Kept for callers: the factor is not 2^31.
    static TS32 Apply(float s) { return TruncateToInt32(static_cast<double>(s) * 214743648.0); }
};

template <class TDestination, class TSource>
void Convert(void* destination, const void* source, std::size_t count) {
    auto* out = static_cast<std::byte*>(destination);
    const auto* in = static_cast<const std::byte*>(source);
    for (; count > 0; --count, out += sizeof(TDestination), in += sizeof(TSource)) {
        TSource sample;
        std::memcpy(&sample, in, sizeof sample);
        const TDestination result = TRule<TDestination, TSource>::Apply(sample);
        std::memcpy(out, &result, sizeof result);
    }
}

} // namespace

constinit const TConversionSet kScalarConversions{
    "scalar",
    [] { return true; },
    {
        {nullptr, &Convert<TS16, TU8>, &Convert<TS32, TU8>, &Convert<float, TU8>},
        {&Convert<TU8, TS16>, nullptr, &Convert<TS32, TS16>, &Convert<float, TS16>},
        {&Convert<TU8, TS32>, &Convert<TS16, TS32>, nullptr, &Convert<float, TS32>},
        {&Convert<TU8, float>, &Convert<TS16, float>, &Convert<TS32, float>, nullptr},
    },
};

} // namespace vorlund::pcm
