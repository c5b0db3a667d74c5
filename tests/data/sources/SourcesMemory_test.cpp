// What the generated sources allocate.
#include "vorlund/data/sources/CbVideoSource.h"
#include "vorlund/data/sources/PlasmaVideoGenerator.h"
#include "vorlund/data/sources/RandomGenerator.h"

#include "support/Allocations.h"
#include "support/LibraryScope.h"
#include "support/NothingLeft.h"

#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vorlund::test {
namespace {

class SourcesMemory : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(SourcesMemory, WholePlasmaFramesNeedNone) {
    const auto source = CRefPtr<IObject>::Adopt(NewObject<CPlasmaVideoGenerator>()).Query<IInputStream>();
    std::vector<std::uint32_t> frame(400 * 300);
    const CAllocationCount count;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(source->Read(frame.data(), 480000), 480000U);
    EXPECT_EQ(count.Get(), 0U);
}

TEST_F(SourcesMemory, TheyGiveBackWhatTheyTake) {
    ExpectNothingLeft([] {
        for (IObject* const object : {NewObject<CCbVideoSource>(), NewObject<CPlasmaVideoGenerator>(),
                                      NewObject<CRandomGenerator>()}) {
            const auto source = CRefPtr<IObject>::Adopt(object).Query<IInputStream>();
            std::uint8_t bytes[16];
            source->Read(bytes, sizeof bytes);
        }
    });
}

} // namespace
} // namespace vorlund::test
