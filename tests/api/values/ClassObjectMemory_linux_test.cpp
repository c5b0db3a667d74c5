// That class objects give their memory back, as the C library counts it: they take it from `malloc`.
#include <vorlund/ClassObject.h>

#include <gtest/gtest.h>

#include <malloc.h>

namespace vorlund::test {
namespace {

class CLarge : public CClassObject {
    char room_[1000] = {};
};

/// What the process holds of the C library's memory. A sanitizer has its own, which it checks by itself.
std::size_t HeldBytes() {
    return mallinfo2().uordblks;
}

TEST(ClassObjectMemory, DeletedObjectsGiveItBack) {
    constexpr std::size_t kRounds = 1000;
    const std::size_t before = HeldBytes();
    for (std::size_t round = 0; round < kRounds; ++round) {
        CClassObject* const object = new CLarge;
        delete object;
    }
    // The C library counts what it keeps for the next object as held.
    EXPECT_LT(HeldBytes(), before + kRounds / 10 * sizeof(CLarge));
}

} // namespace
} // namespace vorlund::test
