// A window, where the machine has a display.
#include "faults/Scenario.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>

namespace vorlund::faults {

void RunWindow(CResult& result) {
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    for (int i = 0; i < 2; ++i) {
        window->SetClientSize(200, 100);
        window->SetTitle(VRL_L("A window under fault"));
        window->Open();
        window->SetTitle(VRL_L("Another title"));
        window->SetWindowSize(300, 200);
        result.Add("%s, ", window->GetHandle() ? "open" : "not open");
        window->Close();
    }
}

} // namespace vorlund::faults
