// Writes a sound file of one of the kinds that the program writes.
#pragma once

#include "ConvertFile.h"
#include "OutputFile.h"
#include "SoundSource.h"

#include <vorlund/AudioEncoder.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WavWriter.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

/// The rate of files of that type when none is wanted: for each rate of a source itself, or the nearest that
/// such files can have.
std::function<std::uint32_t(std::uint32_t rate)> GetUsualRate(const TWrittenType& type);

class CFileEncoder {
public:
    /// \param channels  of what is written
    ///
    /// Raises `TProgramError` and the library's exceptions.
    CFileEncoder(const std::string& name, const TWrittenType& type, const TConvertTarget& target,
                 const CSoundSource& source, std::uint32_t channels);

    /// Of what `Write` takes, a `TBufferFormat`.
    std::uint32_t GetSampleFormat() const { return sampleFormat_; }
    void Write(const void* samples, std::size_t frames);
    /// Completes the file; only `Keep` may follow.
    void Finish();
    /// The file stays, in the place of what was there, which nobody may have open any more.
    void Keep();

private:
    void BeginWav(const CSoundSource& source);
    void BeginEncoder(const TWrittenType& type, const TConvertTarget& target, const CSoundSource& source);

    const std::uint32_t channels_;
    std::uint32_t sampleFormat_ = 0;
    std::unique_ptr<COutputFile> file_;
    std::unique_ptr<vorlund::CWavWriter> writer_;
    vorlund::CRefPtr<vorlund::IAudioEncoder> encoder_;
};
