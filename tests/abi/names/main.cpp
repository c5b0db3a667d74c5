// The public methods whose names are macros of <windows.h>, in every order of the headers. Prints what does
// not hold.
#include "Checks.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

namespace vorlund::test {
namespace {

int checks = 0;
int failures = 0;

} // namespace

void Check(bool holds, const char* where, const char* what) {
    ++checks;
    if (holds) return;
    ++failures;
    std::printf("%s: %s\n", where, what);
}

void CheckSlots(IObjectList& list, const char* where) {
    const auto first = CreateAs<IObject>(classid::CObject);
    const auto second = CreateAs<IObject>(classid::CObject);
    list.AddObject(first.Get());
    list.AddObject(second.Get());
    Check(list.GetObjectCount() == 2, where, "GetObjectCount through the table");
    Check(CRefPtr<IObject>::Adopt(list.GetObject(0)).Get() == first.Get(), where,
          "the first through the table");
    Check(CRefPtr<IObject>::Adopt(list.GetObject(1)).Get() == second.Get(), where,
          "the second through the table");
    list.RemoveAllObjects();
    Check(list.GetObjectCount() == 0, where, "RemoveAllObjects through the table");
}

#define X(name) void name();
#include "Variants.inc"
#undef X

} // namespace vorlund::test

int main() {
    using namespace vorlund;
    v.Init();
#define X(name) test::name();
#include "Variants.inc"
#undef X
    v.Close();
    std::printf("%d checks, %d failures\n", test::checks, test::failures);
    return test::failures == 0 && test::checks > 0 ? 0 : 1;
}
