// Streams at the end of a chain that are no files and can fail all the same.
#pragma once

#include <cstdint>

namespace vorlund {

/// What `GetReadError` asks beside files.
class CReadErrorSource {
public:
    /// The system's number of the first error in reading; 0 without one.
    virtual std::uint32_t GetReadError() const = 0;

protected:
    ~CReadErrorSource() = default;
};

} // namespace vorlund
