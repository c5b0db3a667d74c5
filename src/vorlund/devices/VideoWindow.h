// The video window.
#pragma once

#include "vorlund/devices/NativeWindow.h"
#include "vorlund/devices/WindowEvents.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Event.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/String.h>
#include <vorlund/VideoWindow.h>

#include <atomic>
#include <memory>
#include <thread>

namespace vorlund {

// Life of a window: `Open` starts the thread and waits for `ready_`; the thread creates the window, stores
// its handle, sets `ready_`, runs the loop and clears the handle. So the handle tells both threads whether
// there is a window, and everything else belongs to the caller's thread once `Open` has returned. The thread
// may end by itself (the user closes the window, or the system has none to give); it is joined by the next
// `Open`, `Close` or the destructor, and `native_` lives until then.
//
// The handler of an application runs on the window's thread, where nobody can wait for that thread: `Close`
// there only makes the loop end.
class CVideoWindow : public CObjectImpl<IVideoWindow> {
public:
    static constexpr CId ClassId = classid::CVideoWindow;

    void Open() override;
    void Close() override;
    void* GetHandle() override { return handle_; }
    void SetClientSize(int width, int height) override;
    void SetWindowSize(int width, int height) override;
    void SetTitle(const wchar* title) override;

    /// What `SetWindowHandler` speaks to.
    CWindowEvents& GetEvents() { return events_; }

protected:
    ~CVideoWindow() { Close(); }

private:
    bool IsOnWindowThread() const { return windowThread_ == std::this_thread::get_id(); }
    void JoinThread();
    void RunThread();
    void CreateNative();

    CString title_ = VRL_L("Vorlund Video Window");
    /// Outer size; 0 means the system's own.
    TWindowSize windowSize_;
    /// An inner size that was asked for and that `windowSize_` does not follow yet; 0 when there is none.
    TWindowSize clientSize_{640, 480};
    std::atomic<void*> handle_ = nullptr;
    CWindowEvents events_;
    /// Set by the window's thread itself: `thread_` is not assigned yet when the first event comes.
    std::atomic<std::thread::id> windowThread_;
    /// Whether the application has asked for the end of the window.
    std::atomic<bool> isClosing_ = false;
    std::unique_ptr<CNativeWindow> native_;
    std::thread thread_;
    CEvent ready_;
};

} // namespace vorlund
