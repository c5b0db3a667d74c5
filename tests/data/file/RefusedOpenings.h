/// \file
/// File streams that cannot be opened, and why.
#pragma once

#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamErrors.h>

namespace vorlund::test {

class CRefusedOpenings : public CFileTest {
protected:
    ~CRefusedOpenings() noexcept override = default;

    TOpenCause OfInput(const fs::path& name) {
        EXPECT_THROW(input_->Open(ToVorlund(At(name)).c_str()), CFileAccessException) << name;
        return GetOpenFailure().cause;
    }
    TOpenCause OfOutput(const fs::path& name) {
        EXPECT_THROW(output_->Open(ToVorlund(At(name)).c_str(), false), CFileAccessException) << name;
        return GetOpenFailure().cause;
    }

    CRefPtr<IFileInputStream> input_ = CreateAs<IFileInputStream>(classid::CFileInputStream);
    CRefPtr<IFileOutputStream> output_ = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
};

} // namespace vorlund::test
