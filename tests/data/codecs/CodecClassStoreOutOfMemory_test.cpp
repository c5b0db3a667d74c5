// The codec class store and its search when memory runs out.
#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RefuseEachAllocation.h"
#include "support/TestDecoders.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class CodecClassStoreOutOfMemory : public testing::Test {
protected:
    CodecClassStoreOutOfMemory() { store_.Init(); }
    ~CodecClassStoreOutOfMemory() noexcept override { store_.Close(); }

    std::size_t CountDecoders() {
        const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateDecoders());
        std::size_t count = 0;
        for (; enumerator->HasNext(); ++count) CRefPtr<IObject>::Adopt(enumerator->GetNext()).Reset();
        return count;
    }

    CLibraryScope library_;
    CTestDecoders decoders_;
    CCodecClassStore store_;
};

TEST_F(CodecClassStoreOutOfMemory, InitLeavesTheStoreClosed) {
    const CMemoryWatch watch;
    CCodecClassStore store;
    EXPECT_GE(RefuseEachAllocation([&] { store.Init(); }, [&] { EXPECT_EQ(watch.GetLiveBlocks(), 0); }), 1U);
    store.Close();
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

TEST_F(CodecClassStoreOutOfMemory, RegistrationIsWholeOrNotAtAll) {
    std::size_t refusals = 0;
    for (std::size_t before = 0; before < 100; ++before) {
        refusals += RefuseEachAllocation(
            [&] {
                store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
            },
            [&] { EXPECT_EQ(CountDecoders(), before); }, TKept::Room);
        ASSERT_EQ(CountDecoders(), before + 1);
    }
    EXPECT_GE(refusals, 1U);
}

TEST_F(CodecClassStoreOutOfMemory, EnumerationLeaksNothing) {
    for (unsigned int i = 0; i < 20; ++i) {
        store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    }
    EXPECT_GT(RefuseEachAllocation([&] { CountDecoders(); }, [] {}), 20U);
}

TEST_F(CodecClassStoreOutOfMemory, SearchLeaksNothing) {
    for (unsigned int i = 0; i < 5; ++i) {
        decoders_.Register(store_, i, {.accepts = TestFormat(i + 1), .produces = TestFormat(i + 2)});
    }
    const auto source = Make<CMemoryInputStream>();
    source->format = HeadOnly(TestFormat(1));
    // No event of the coming search needs memory of its own.
    decoders_.events.reserve(10000);
    const int live = CLiveObject::GetCount();
    for (const CId& wanted : {TestFormat(6), CId::Null()}) {
        const auto decode = [&] {
            CRefPtr<IInputStream>::Adopt(store_.DecodeStream(source.Get(), wanted)).Reset();
            decoders_.events.clear();
        };
        const std::size_t failures = RefuseEachAllocation(decode, [&] {
            decoders_.events.clear();
            EXPECT_EQ(CLiveObject::GetCount(), live);
            EXPECT_EQ(ReferencesOf(source.Get()), 1);
        });
        // The enumerator, five records and five decoders at least.
        EXPECT_GT(failures, 11U);
    }
}

} // namespace
} // namespace vorlund::test
