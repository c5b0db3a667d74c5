// The library that resamples; Engine_soxr.cpp and Engine_samplerate.cpp are the choice.
#pragma once

#include <vorlund/PcmFilterImpl.h>
#include <vorlund/Resampler.h>
#include <vorlund/String.h>

#include <cstddef>
#include <memory>

/// One sound on its way through the library. Results begin without delay; behind the end the sound is silent.
class IEngine {
public:
    virtual ~IEngine() = default;

    /// Appends to `output` the floats that further `frames` make.
    virtual void Process(vorlund::CBlockBuffer& output, const float* source, std::size_t frames) = 0;
    /// Appends what is left: at least `frames`, or all that belongs to the frames so far. Once, at the end.
    virtual void Finish(vorlund::CBlockBuffer& output, std::size_t frames) = 0;
};

/// Raises `CFailedException` "Cannot resample", as everything that an engine does.
[[noreturn]] void RaiseCannotResample();

/// The name and version of the library.
vorlund::CString GetEngineLibrary();

/// \param resampling  with different rates and a known quality
std::unique_ptr<IEngine> CreateEngine(const vorlund::TResampling& resampling);
