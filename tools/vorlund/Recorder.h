// Writes what is recorded into a WAV file.
#pragma once

#include "Levels.h"
#include "OutputFile.h"

#include <vorlund/DataFormat.h>
#include <vorlund/WavWriter.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct TRecordedFormat {
    std::uint32_t rate;
    std::uint32_t channels;
    /// "8", "16", "24", "32" or "float".
    std::string bits;
};

/// A recording is written in place, unlike what other commands make: it must be there when the process is
/// killed, and opens at every moment with all but the last second.
class CRecorder {
public:
    /// \param output  UTF-8, "-" for the standard output
    /// \param frames  how many will be written, when that is known; for the header of what cannot go back
    ///
    /// Raises `TProgramError` and the library's exceptions.
    CRecorder(const std::string& output, const TRecordedFormat& format, std::optional<std::uint64_t> frames);

    /// What the samples of such a file are recorded as.
    static vorlund::TDataFormat_AudioPcm GetInputFormat(const TRecordedFormat& format);

    /// Frames of the input's format. Raises as the constructor.
    void Write(const void* frames, std::size_t count);
    /// Makes the file whole up to now.
    void Flush();
    /// Completes the file; nothing may follow.
    void Finish();

    /// Frames that were written.
    std::uint64_t GetFrames() const { return frames_; }
    /// The greatest peak since the last call, and of everything.
    float TakeLevel();
    float GetPeak() const { return peak_; }

private:
    [[noreturn]] void Fail() const;

    const std::string output_;
    const vorlund::TDataFormat_AudioPcm input_;
    /// A `TBufferFormat`.
    const std::uint32_t written_;
    CPeakFinder finder_;
    /// The standard output; none for files.
    std::unique_ptr<COutputFile> stream_;
    std::unique_ptr<vorlund::CWavWriter> writer_;
    std::vector<std::uint8_t> converted_;
    std::uint64_t frames_ = 0;
    float level_ = 0;
    float peak_ = 0;
};
