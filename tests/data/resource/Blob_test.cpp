// Blobs.
#include <vorlund/Blob.h>
#include <vorlund/Exception.h>

#include "support/Failures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/Blob");
constexpr TFailure kDataIsNull{VRL_L("vorlund::CBlob::SetData"), kFile, 48, VRL_L("data is NULL")};
constexpr TFailure kOutOfMemory{VRL_L("vorlund::CBlob::Allocate"), kFile, 63, VRL_L("malloc failed")};

std::string TextOf(const CBlob& blob) {
    return {static_cast<const char*>(blob.GetData()), static_cast<std::size_t>(blob.GetSize())};
}

CBlob Make(const char* text) {
    return CBlob(text, std::strlen(text));
}

TEST(Blob, IsEmptyAtFirst) {
    const CBlob blob;
    EXPECT_TRUE(blob.IsEmpty());
    EXPECT_EQ(blob.GetSize(), 0U);
    EXPECT_EQ(blob.GetData(), nullptr);
    EXPECT_EQ(CBlob(nullptr, 0), blob);
    EXPECT_EQ(CBlob("x", 0), blob);
}

TEST(Blob, CopiesBytes) {
    char text[] = "hello";
    CBlob blob(text, 5);
    text[0] = 'j';
    EXPECT_EQ(TextOf(blob), "hello");
    EXPECT_FALSE(blob.IsEmpty());
    static_cast<char*>(blob.GetData())[0] = 'y';
    EXPECT_EQ(TextOf(blob), "yello");
}

TEST(Blob, CopiesAreTheirOwn) {
    CBlob first = Make("hello");
    CBlob second = first;
    EXPECT_EQ(first, second);
    static_cast<char*>(second.GetData())[0] = 'j';
    EXPECT_EQ(TextOf(first), "hello");
    EXPECT_NE(first, second);
    first = second;
    EXPECT_EQ(TextOf(first), "jello");
    const CBlob& same = first;
    first = same;
    EXPECT_EQ(TextOf(first), "jello");
    first = CBlob();
    EXPECT_TRUE(first.IsEmpty());
}

TEST(Blob, MovesLeaveNothing) {
    CBlob first = Make("hello");
    CBlob second(std::move(first));
    EXPECT_EQ(TextOf(second), "hello");
    EXPECT_TRUE(first.IsEmpty()); // NOLINT(bugprone-use-after-move)
    CBlob third = Make("other");
    third = std::move(second);
    EXPECT_EQ(TextOf(third), "hello");
    EXPECT_TRUE(second.IsEmpty()); // NOLINT(bugprone-use-after-move)
    CBlob& same = third;
    third = std::move(same);
    EXPECT_EQ(TextOf(third), "hello");
}

TEST(Blob, SizeCutsAndFillsUp) {
    CBlob blob = Make("hello");
    blob.SetSize(3);
    EXPECT_EQ(TextOf(blob), "hel");
    blob.SetSize(6);
    EXPECT_EQ(TextOf(blob), std::string("hel\0\0\0", 6));
    const void* const data = blob.GetData();
    blob.SetSize(6);
    EXPECT_EQ(blob.GetData(), data);
    blob.Clear();
    EXPECT_TRUE(blob.IsEmpty());
    EXPECT_EQ(blob.GetData(), nullptr);
    blob.SetSize(2);
    EXPECT_EQ(TextOf(blob), std::string("\0\0", 2));
}

TEST(Blob, DataMayBeItsOwn) {
    CBlob blob = Make("hello");
    blob.SetData(static_cast<const char*>(blob.GetData()) + 1, 3);
    EXPECT_EQ(TextOf(blob), "ell");
}

TEST(Blob, EqualInSizeAndBytes) {
    EXPECT_EQ(Make("ab"), Make("ab"));
    EXPECT_NE(Make("ab"), Make("abc"));
    EXPECT_NE(Make("ab"), Make("ac"));
    EXPECT_NE(Make("ab"), CBlob());
}

TEST(Blob, FailuresLeaveItAsItWas) {
    CBlob blob = Make("hello");
    ExpectRaises<CNullPtrException>(kDataIsNull, [&] { blob.SetData(nullptr, 1); });
    ExpectRaises<CNullPtrException>(kDataIsNull, [] { const CBlob other(nullptr, 1); });
    for (const std::uint64_t size : {std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
        ExpectRaises<COutOfMemoryException>(kOutOfMemory, [&] { blob.SetSize(size); });
        ExpectRaises<COutOfMemoryException>(kOutOfMemory, [&] { blob.SetData("x", size); });
    }
    EXPECT_EQ(TextOf(blob), "hello");
}

} // namespace
} // namespace vorlund::test
