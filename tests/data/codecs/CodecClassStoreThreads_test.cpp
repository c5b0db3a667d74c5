// The end of a codec class store while another thread is inside.
#include "support/Actor.h"
#include "support/Allocations.h"
#include "support/Latch.h"
#include "support/LibraryScope.h"
#include "support/TestDecoders.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

void RegisterOne(CCodecClassStore& store) {
    store.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
}

/// How many records a new store takes before one makes it ask for memory, which it does inside its lock.
unsigned int CountRecordsWithoutMemory() {
    CCodecClassStore store;
    store.Init();
    unsigned int records = 0;
    for (const CAllocationCount count; RegisterOne(store), count.Get() == 0;) ++records;
    store.Close();
    return records;
}

TEST(CodecClassStoreThreads, CloseWaitsForARegistration) {
    const CLibraryScope library;
    const unsigned int records = CountRecordsWithoutMemory();
    CCodecClassStore store;
    store.Init();
    for (unsigned int i = 0; i < records; ++i) RegisterOne(store);
    CLatch inside(1);
    CLatch mayGo(1);
    CActor registrar;
    CActor closer;
    registrar.Start([&] {
        const CAllocationStep step([&] {
            inside.CountDown();
            mayGo.Wait();
        });
        RegisterOne(store);
    });
    inside.Wait();
    closer.Start([&] { store.Close(); });
    EXPECT_TRUE(closer.StaysBusy());
    mayGo.CountDown();
    EXPECT_TRUE(closer.Finishes());
    EXPECT_TRUE(registrar.Finishes());
}

} // namespace
} // namespace vorlund::test
