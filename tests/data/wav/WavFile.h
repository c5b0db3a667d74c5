/// \file
/// WAV files as the tests look at them: chunks read anew from the bytes, apart from the library's own code.
#pragma once

#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <vorlund/WavWriter.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vorlund::test {

inline std::uint64_t Number(const TBytes& bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes.at(at + i);
    return value;
}

inline std::string Text(const TBytes& bytes, std::size_t at, std::size_t size) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(at),
            bytes.begin() + static_cast<std::ptrdiff_t>(at + size)};
}

struct TFoundChunk {
    std::string id;
    std::size_t begin = 0;
    std::uint32_t size = 0;
};

/// The chunks of a whole file; a fault when they do not end exactly where the file and its head say.
inline std::vector<TFoundChunk> ReadChunks(const TBytes& bytes) {
    std::vector<TFoundChunk> chunks;
    if (bytes.size() < 12) {
        ADD_FAILURE() << bytes.size() << " bytes are no file";
        return chunks;
    }
    EXPECT_EQ(Text(bytes, 0, 4) + Text(bytes, 8, 4), "RIFFWAVE");
    EXPECT_EQ(Number(bytes, 4, 4), bytes.size() - 8);
    std::size_t at = 12;
    while (at + 8 <= bytes.size()) {
        const auto size = static_cast<std::uint32_t>(Number(bytes, at + 4, 4));
        chunks.push_back({Text(bytes, at, 4), at + 8, size});
        at += 8 + std::size_t{size} + size % 2;
    }
    EXPECT_EQ(at, bytes.size());
    return chunks;
}

inline std::string Ids(const TBytes& bytes) {
    std::string ids;
    for (const TFoundChunk& chunk : ReadChunks(bytes)) ids += (ids.empty() ? "" : ",") + chunk.id;
    return ids;
}

/// The data of the first chunk of that id.
inline TBytes Body(const TBytes& bytes, const std::string& id) {
    for (const TFoundChunk& chunk : ReadChunks(bytes)) {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(chunk.begin);
        if (chunk.id == id) return {begin, begin + chunk.size};
    }
    ADD_FAILURE() << "no chunk " << id;
    return {};
}

/// What a writer makes of `sound`.
inline TBytes WriteWav(const TWavWriterFormat& format, const TBytes& sound,
                       const TWavWriterOptions& options = {}) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), format, options);
    writer.Write(sound.data(), sound.size());
    EXPECT_EQ(writer.GetSize(), sound.size());
    writer.Close();
    EXPECT_EQ(stream->closed, 1);
    return stream->bytes;
}

/// Options for the shortest header.
inline TWavWriterOptions Small() {
    TWavWriterOptions options;
    options.canGrow = false;
    return options;
}

} // namespace vorlund::test
