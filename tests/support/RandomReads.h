/// \file
/// Reads that divide a stream in ways that nobody would think of.
#pragma once

#include "support/Streams.h"

#include <cstddef>
#include <cstdint>
#include <random>

namespace vorlund::test {

/// Everything from here to the end, in reads of 1 to `most` bytes; the same reads for each `seed`. After each
/// read that delivers something, `look` is given all bytes so far.
template <class TLook>
TBytes ReadRandomly(IInputStream& stream, unsigned int seed, std::size_t most, TLook look) {
    std::mt19937 random(seed);
    TBytes bytes;
    for (;;) {
        const std::size_t at = bytes.size();
        const std::size_t wanted = 1 + random() % most;
        bytes.resize(at + wanted);
        const std::uint64_t count = stream.Read(bytes.data() + at, wanted);
        bytes.resize(at + static_cast<std::size_t>(count));
        if (count == 0) return bytes;
        look(bytes);
    }
}
inline TBytes ReadRandomly(IInputStream& stream, unsigned int seed, std::size_t most) {
    return ReadRandomly(stream, seed, most, [](const TBytes&) {});
}

} // namespace vorlund::test
