// Decoded sound as floats, for what looks at all of it.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

/// Is given the sound, once.
class CSoundSink {
public:
    CSoundSink() = default;
    CSoundSink(const CSoundSink&) = delete;
    CSoundSink& operator=(const CSoundSink&) = delete;
    virtual ~CSoundSink() = default;

    /// The next frames, interleaved, 1.0 at full scale.
    virtual void Write(const float* samples, std::size_t frames) = 0;
};

/// Reads PCM from where it is to its end and gives it to all sinks; a part of a frame at the end is left out.
///
/// \param onBlock  is told the bytes so far; what it raises ends the reading
/// \return the number of frames
///
/// Raises `TProgramError` and what stream and sinks raise.
std::uint64_t ReadSound(vorlund::IInputStream& decoded, std::span<CSoundSink* const> sinks,
                        const std::function<void(std::uint64_t done)>& onBlock);

/// Reads until `size` bytes are there or the stream ends; how many.
std::size_t Fill(vorlund::IInputStream& stream, void* buffer, std::size_t size);
