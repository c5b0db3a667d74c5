// The memory of the filters over `CGuardedFilterImpl`, when the stream below them fails as it ends.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/NothingLeft.h"
#include "support/Probes.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(GuardedFilterImplMemory, NothingIsLeftWhenTheEndOfTheStreamRaises) {
    const CLibraryScope library;
    const TBytes file = PlainWav({.channels = 2}, Ramp(200));
    CTestListener listener([](IObject*) { Raise<CInvalidStateException>(streamfailures::kCannotRead); });
    for (const CId& filterClass : {classid::CSetFormatIsf, classid::CWavChunkDecoder}) {
        ExpectNothingLeftAgain([&] {
            auto filter = CreateAs<IInputStreamFilter>(filterClass);
            auto stream = Make<CMemoryInputStream>();
            stream->bytes = file;
            stream->AddListener(&listener);
            filter->Connect(stream.Get());
            stream.Reset();
            ExpectRaises<CInvalidStateException>(streamfailures::kCannotRead, [&] { filter.Reset(); });
        });
    }
}

} // namespace
} // namespace vorlund::test
