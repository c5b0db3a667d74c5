// A module that uses the library, as a plug-in host's module would: loading it loads the library, unloading
// it unloads the library.
#include "api/ChildReports.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

extern "C" {

/// Sends the library's reports to the standard output. The handler lies in this module, which is still there
/// while the library ends.
void UnloadClientListen() {
    vorlund::test::SendReportsToParent();
}

/// Opens the library; returns the number of the first object, which is 1 in every life of the library.
int UnloadClientOpen() {
    vorlund::v.Init();
    return vorlund::CreateAs<vorlund::IObject>(vorlund::classid::CObject)->GetObjectNumber();
}

void UnloadClientClose() {
    vorlund::v.Close();
}
}
