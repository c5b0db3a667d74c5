// What the variants share with the program that runs them.
#pragma once

namespace vorlund {
class IObjectList;
}

namespace vorlund::test {

/// Counts and prints what does not hold; `where` names the variant.
void Check(bool holds, const char* where, const char* what);

/// Fills `list` and reads it through its virtual table, in a file that has never seen <windows.h>.
void CheckSlots(IObjectList& list, const char* where);

} // namespace vorlund::test
