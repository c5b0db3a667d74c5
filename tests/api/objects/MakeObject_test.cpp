#include <vorlund/ClassStore.h>
#include <vorlund/MakeObject.h>

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

/// A probe with a constructor of its own.
class CNamedProbe : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x1BADB002, 0x00000002, 0x4E414D45, 0x00000044};

    const std::string& GetName() const { return name_; }

protected:
    CNamedProbe(const std::string& name, std::unique_ptr<int> value) : name_(name + std::to_string(*value)) {}
    ~CNamedProbe() = default;

private:
    std::string name_;
};

class MakeObjects : public testing::Test {
protected:
    std::optional<CLibraryScope> library_{std::in_place};
};

TEST_F(MakeObjects, ForwardsTheArguments) {
    const auto object = MakeObject<CNamedProbe>("n", std::make_unique<int>(3));
    EXPECT_EQ(object->GetName(), "n3");
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
    EXPECT_TRUE(object.Query<IObject>());
    EXPECT_EQ(object->GetClassId(), CNamedProbe::ClassId);
    EXPECT_GT(object->GetObjectNumber(), 0);
}

TEST_F(MakeObjects, NeedsNoArguments) {
    const CRefPtr<CProbe> object = MakeObject<CProbe>();
    EXPECT_EQ(CProbe::alive, 1);
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
}

TEST_F(MakeObjects, PointersBecomeThoseOfInterfacesAndCompare) {
    const CRefPtr<CProbe> probe = MakeObject<CProbe>();
    const CRefPtr<IObject> object = probe;
    EXPECT_EQ(ReferencesOf(object.Get()), 2);
    EXPECT_TRUE(object == probe);
    EXPECT_FALSE(object == nullptr);
    EXPECT_TRUE(CRefPtr<IObject>() == nullptr);
    EXPECT_TRUE(object != MakeObject<CProbe>());
    static_assert(!std::is_convertible_v<CRefPtr<IObject>, CRefPtr<CProbe>>);
    static_assert(!std::is_constructible_v<CRefPtr<CProbe>, CRefPtr<IObject>>);
}

TEST_F(MakeObjects, ContainersHoldSafePointers) {
    std::vector<CSafeRefPtr<IObject>> objects;
    for (int i = 0; i < 20; ++i) objects.emplace_back(MakeObject<CProbe>());
    EXPECT_EQ(CProbe::alive, 20);
    objects.erase(objects.begin(), objects.begin() + 10);
    EXPECT_EQ(CProbe::alive, 10);
    const CSafeRefPtr<IObject> kept = objects.front();
    EXPECT_EQ(ReferencesOf(kept.Get()), 2);
    EXPECT_TRUE(kept == objects.front());
    EXPECT_FALSE(kept == objects.back());
    EXPECT_EQ(kept.Share().Get(), kept.Get());
    objects.clear();
    EXPECT_EQ(CProbe::alive, 1);
    EXPECT_TRUE(CSafeRefPtr<IObject>() == nullptr);
}

TEST_F(MakeObjects, SafePointersRaiseNothingAfterTheEndOfTheLibrary) {
    {
        std::vector<CSafeRefPtr<IObject>> objects;
        objects.emplace_back(MakeObject<CProbe>());
        library_.reset();
    }
    EXPECT_EQ(CProbe::alive, 0);
}

template <class TName>
concept TClassName = requires(const CClassStore& store, TName name) {
    store.CreateObject(name);
};

TEST_F(MakeObjects, NarrowNamesAreRefusedByTheCompiler) {
    static_assert(TClassName<const wchar*>);
    static_assert(TClassName<CId>);
    static_assert(TClassName<std::nullptr_t>);
    static_assert(!TClassName<const char*>);
    static_assert(!TClassName<char*>);
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(services::ClassStore().CreateObject(VRL_L("vorlund::CObject"))));
}

} // namespace
} // namespace vorlund::test
