/// \file
/// A stream that calls the test when it is read.
#pragma once

#include "support/Streams.h"

#include <functional>

namespace vorlund::test {

/// Calls a function of the test in each `Read`.
class CCallingStream : public CFaultyInputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x8D31E2C7, 0x5A90F64B, 0x51B3A8D1};

    std::function<void()> call;

    using CFaultyInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (call) call();
        return CFaultyInputStream::Read(buffer, size);
    }
};

} // namespace vorlund::test
