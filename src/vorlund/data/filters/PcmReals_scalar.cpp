#include "vorlund/data/filters/PcmReals.h"

#include <cstring>

namespace vorlund::pcm {
namespace {

template <class TSample> struct TRule {
    double zero;
    double scale;
};
constexpr TRule<std::uint8_t> k8{128, 0x1p-7};
constexpr TRule<std::int16_t> k16{0, 0x1p-15};
constexpr TRule<std::int32_t> k32{0, 0x1p-31};
constexpr TRule<float> kFloat{0, 1};

template <class TSample, const TRule<TSample>& rule>
void Load(void* destination, const void* source, std::size_t count) {
    auto* const to = static_cast<std::byte*>(destination);
    const auto* const from = static_cast<const std::byte*>(source);
    for (std::size_t i = 0; i < count; ++i) {
        TSample sample;
        std::memcpy(&sample, from + i * sizeof sample, sizeof sample);
        const double real = (static_cast<double>(sample) - rule.zero) * rule.scale;
        std::memcpy(to + i * sizeof real, &real, sizeof real);
    }
}

} // namespace

constinit const TRealsSet kScalarReals{
    "scalar",
    [] { return true; },
    {{&Load<std::uint8_t, k8>, &Load<std::int16_t, k16>, &Load<std::int32_t, k32>, &Load<float, kFloat>}}};

} // namespace vorlund::pcm
