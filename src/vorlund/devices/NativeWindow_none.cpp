// A build without a window system: every window stays closed.
#include "vorlund/devices/NativeWindow.h"

namespace vorlund {

std::unique_ptr<CNativeWindow> CNativeWindow::Create(const wchar*, CWindowEvents&) {
    return nullptr;
}

} // namespace vorlund
