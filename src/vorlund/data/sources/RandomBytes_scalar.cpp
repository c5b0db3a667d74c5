#include "vorlund/data/sources/RandomBytes.h"

namespace vorlund {
namespace {

std::uint32_t WriteBytes(std::uint32_t state, std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        state = NextRandomState(state);
        bytes[i] = RandomByteOf(state);
    }
    return state;
}

} // namespace

constinit const TRandomSet kScalarRandom{"scalar", [] { return true; }, WriteBytes};

} // namespace vorlund
