#include "vorlund/devices/VideoWindow.h"

#include <new>
#include <system_error>

namespace vorlund {

void CVideoWindow::Open() {
    if (handle_) return;
    // From a handler: there is nothing that could wait for the window.
    if (IsOnWindowThread()) return;
    JoinThread();
    // An event that the system has refused is never set, and waiting for it ends at once, while the thread
    // goes on. Then there is no window: the null handle says so.
    ready_.SetState(true);
    if (!ready_.GetState()) return;
    ready_.SetState(false);
    isClosing_ = false;
    try {
        thread_ = std::thread(&CVideoWindow::RunThread, this);
    } catch (const std::system_error&) {
        // No thread, no window: the null handle says so.
        return;
    }
    ready_.Wait();
}

void CVideoWindow::Close() {
    isClosing_ = true;
    if (handle_) native_->Destroy();
    if (!IsOnWindowThread()) JoinThread();
}

void CVideoWindow::SetClientSize(int width, int height) {
    clientSize_ = {width, height};
    windowSize_ = {};
    if (!handle_) return;
    const TWindowSize outer = native_->GetOuterSize(clientSize_);
    clientSize_ = {};
    SetWindowSize(outer.width, outer.height);
}

void CVideoWindow::SetWindowSize(int width, int height) {
    windowSize_ = {width, height};
    if (handle_) native_->Resize(windowSize_);
}

void CVideoWindow::SetTitle(const wchar* title) {
    title_ = title;
    if (handle_) native_->SetTitle(title_);
}

void CVideoWindow::JoinThread() {
    if (!thread_.joinable()) return;
    thread_.join();
    native_ = nullptr;
    windowThread_ = std::thread::id();
}

void CVideoWindow::RunThread() {
    windowThread_ = std::this_thread::get_id();
    events_.Begin();
    try {
        CreateNative();
    } catch (const std::bad_alloc&) {
        // The same result as when the system has no window to give.
    }
    const bool isOpen = native_ != nullptr;
    // From here on the thread in `Open` goes on, and may set sizes and titles.
    ready_.SetState(true);
    if (!isOpen) return;
    native_->RunLoop();
    handle_ = nullptr;
    if (!isClosing_) events_.TellClosed();
}

void CVideoWindow::CreateNative() {
    native_ = CNativeWindow::Create(title_, events_);
    if (!native_) return;
    handle_ = native_->GetHandle();
    if (clientSize_.width > 0 && clientSize_.height > 0) {
        windowSize_ = native_->GetOuterSize(clientSize_);
        clientSize_ = {};
    }
    if (windowSize_.width != 0 && windowSize_.height != 0) native_->Resize(windowSize_);
    native_->SetOwner(static_cast<IVideoWindow*>(this));
}

} // namespace vorlund
