#include "vorlund/system/IntrusiveList.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

struct TItem {
    char name;
    TItem* previous = nullptr;
    TItem* next = nullptr;
};

/// The names in the order of the list, then in the reverse order by the links that lead back.
std::string Read(const CIntrusiveList<TItem>& list) {
    std::string names;
    TItem* last = nullptr;
    for (TItem* item = list.GetFirst(); item; item = item->next) {
        names += item->name;
        last = item;
    }
    names += '|';
    for (TItem* item = last; item; item = item->previous) names += item->name;
    return names;
}

TEST(IntrusiveList, KeepsTheOrderInWhichItemsAreAppended) {
    CIntrusiveList<TItem> list;
    TItem a{'a'};
    TItem b{'b'};
    TItem c{'c'};
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_FALSE(list.HasOne());
    list.Append(a);
    EXPECT_FALSE(list.IsEmpty());
    EXPECT_TRUE(list.HasOne());
    list.Append(b);
    EXPECT_FALSE(list.HasOne());
    list.Append(c);
    EXPECT_EQ(Read(list), "abc|cba");
}

TEST(IntrusiveList, AnyItemCanBeTakenOutAndAppendedAgain) {
    CIntrusiveList<TItem> list;
    TItem a{'a'};
    TItem b{'b'};
    TItem c{'c'};
    for (TItem* item : {&a, &b, &c}) list.Append(*item);
    list.Remove(b);
    EXPECT_EQ(Read(list), "ac|ca");
    list.Append(b);
    EXPECT_EQ(Read(list), "acb|bca");
    list.Remove(a);
    EXPECT_EQ(Read(list), "cb|bc");
    list.Append(a);
    list.Remove(a);
    EXPECT_EQ(Read(list), "cb|bc");
    list.Remove(b);
    EXPECT_TRUE(list.HasOne());
    list.Remove(c);
    EXPECT_TRUE(list.IsEmpty());
    // Its links are of the past.
    list.Append(b);
    EXPECT_EQ(Read(list), "b|b");
}

} // namespace
} // namespace vorlund::test
