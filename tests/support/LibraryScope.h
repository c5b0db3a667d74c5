/// \file
/// The library initialised for the length of a block.
#pragma once

#include <vorlund/Vorlund.h>

namespace vorlund::test {

/// Opens the library, unless it is open, and closes it at the end, unless the test has done so.
class CLibraryScope {
public:
    CLibraryScope() { v.Init(); }
    CLibraryScope(const CLibraryScope&) = delete;
    CLibraryScope& operator=(const CLibraryScope&) = delete;
    ~CLibraryScope() { v.Close(); }
};

} // namespace vorlund::test
