// Converts one sound file.
#pragma once

#include "ConvertPlan.h"

#include <vorlund/Platform.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// What the files are to become; what is not set stays as it is.
struct TConvertTarget {
    /// Frames a second.
    std::optional<std::uint32_t> rate = {};
    std::optional<std::uint32_t> channels = {};
    /// "8", "16", "24", "32" or "float".
    std::string bits;
    /// In seconds.
    double from = 0;
    std::optional<double> to = {};
    /// In LUFS.
    std::optional<double> loudness = {};
    /// Of lossy files, from 0 to 1, as text.
    std::string quality;
    bool isDithered = false;
};

/// What became of a file.
struct TConverted {
    /// The file is none with sound: of a folder, that is no fault.
    bool isSkipped = false;
    /// Samples beyond full scale.
    std::uint64_t clipped = 0;
};

/// \param onProgress  is told how much of the work is done, from 0 to 1; what it raises ends the conversion
///
/// No partial output is left behind. Raises `TProgramError` and the library's exceptions. Several threads may
/// convert different files.
TConverted ConvertFile(const TConvertJob& job, const TWrittenType& type, const TConvertTarget& target,
                       const std::function<void(double share)>& onProgress);
