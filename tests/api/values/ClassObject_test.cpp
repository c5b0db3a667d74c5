#include <vorlund/ClassObject.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorlund::test {
namespace {

constexpr TFailure kMallocFailed{VRL_L("CCLassObject::operator new"), VRL_L("src/vorlund/api/ClassObject"),
                                 24, VRL_L("malloc failed")};

struct TSizeRow {
    const char* name;
    std::size_t size;
};

class ClassObjectExhausted : public testing::TestWithParam<TSizeRow> {};

TEST_P(ClassObjectExhausted, Raises) {
    // The compiler must not see the number: it would warn of the size.
    const volatile std::size_t size = GetParam().size;
    ExpectRaises<COutOfMemoryException>(kMallocFailed, [&] { CClassObject::operator new(size); });
}

constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
INSTANTIATE_TEST_SUITE_P(Rows, ClassObjectExhausted,
                         testing::Values(TSizeRow{"Most", kMax}, TSizeRow{"NearlyMost", kMax - 4096},
                                         TSizeRow{"MuchLess", kMax - kMax / 16}),
                         [](const auto& row) { return row.param.name; });

TEST(ClassObject, ExhaustionIsReportedWithoutABox) {
    const CDebugRecorder recorder;
    const volatile std::size_t size = kMax;
    ExpectRaises<COutOfMemoryException>(kMallocFailed, [&] { CClassObject::operator new(size); });
    const auto entries = recorder.GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].type, DEBUG_MESSAGE_OUTPUT);
    EXPECT_EQ(Narrow(entries[0].text),
              "Exception: type=COutOfMemoryException | method=CCLassObject::operator new | "
              "file=src/vorlund/api/ClassObject | line=24 | reason=malloc failed");
}

TEST(ClassObject, AllocatesAlignedWritableMemory) {
    for (const std::size_t size : {std::size_t{1}, sizeof(CClassObject), std::size_t{65536}}) {
        void* const memory = CClassObject::operator new(size);
        ASSERT_NE(memory, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % sizeof(void*), 0u);
        std::memset(memory, 0xA5, size);
        CClassObject::operator delete(memory);
    }
}

TEST(ClassObject, NullMayBeFreed) {
    const CDebugRecorder recorder;
    CClassObject::operator delete(nullptr);
    EXPECT_TRUE(recorder.GetEntries().empty());
}

class CDerived : public CClassObject {
public:
    explicit CDerived(std::string& log) : log_(log) {}
    ~CDerived() noexcept(false) override { log_ += "derived "; }

private:
    std::string& log_;
};

class CMoreDerived : public CDerived {
public:
    explicit CMoreDerived(std::string& log) : CDerived(log), moreLog_(log) {}
    ~CMoreDerived() noexcept(false) override { moreLog_ += "more "; }

private:
    std::string& moreLog_;
    // Destroyed through the base, yet freed whole.
    char room_[1000] = {};
};

TEST(ClassObject, DestructorIsVirtual) {
    std::string log;
    CClassObject* const object = new CMoreDerived(log);
    delete object;
    EXPECT_EQ(log, "more derived ");
}

class CRaisingEnd : public CClassObject {
public:
    ~CRaisingEnd() noexcept(false) override { throw std::runtime_error("end"); }
};

TEST(ClassObject, DestructorsMayRaise) {
    CClassObject* const object = new CRaisingEnd;
    EXPECT_THROW(delete object, std::runtime_error);
    EXPECT_THROW({ CRaisingEnd local; }, std::runtime_error);
}

class CRaisingStart : public CClassObject {
public:
    CRaisingStart() { throw std::runtime_error("start"); }
};

TEST(ClassObject, ConstructorsMayRaise) {
    EXPECT_THROW(new CRaisingStart, std::runtime_error);
}

class CNamed : public CClassObject {
public:
    explicit CNamed(std::string name) : name_(std::move(name)) {}
    const std::string& GetName() const { return name_; }

private:
    std::string name_;
};

TEST(ClassObject, DerivedClassesAreCopiedWhole) {
    const CNamed first("first");
    CNamed second("second");
    CNamed third(first);
    EXPECT_EQ(third.GetName(), "first");
    second = first;
    EXPECT_EQ(second.GetName(), "first");
}

} // namespace
} // namespace vorlund::test
