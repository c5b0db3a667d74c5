#include "vorlund/devices/WindowEvents.h"

#include "vorlund/devices/VideoWindow.h"

#include <algorithm>

namespace vorlund {

void CWindowEvents::SetHandler(TWindowHandler handler, void* user) {
    const std::lock_guard lock(mutex_);
    handler_ = handler;
    user_ = user;
}

void CWindowEvents::Begin() {
    size_ = {};
    heldCount_ = 0;
}

void CWindowEvents::TellSize(TWindowSize inside) noexcept {
    if (inside.width == size_.width && inside.height == size_.height) return;
    size_ = inside;
    Tell({.type = WINDOW_EVENT_RESIZED});
}

void CWindowEvents::TellPressed(std::uint32_t code, std::uint32_t key, std::uint32_t modifiers) noexcept {
    THeldKey* const held = Find(code);
    if (held)
        held->key = key;
    else if (heldCount_ < kMaxHeld)
        held_[heldCount_++] = {code, key};
    Tell(
        {.type = WINDOW_EVENT_KEY_PRESSED, .key = key, .modifiers = modifiers, .isRepeated = held ? 1U : 0U});
}

void CWindowEvents::TellReleased(std::uint32_t code, std::uint32_t modifiers) noexcept {
    THeldKey* const held = Find(code);
    if (!held) return;
    const std::uint32_t key = held->key;
    *held = held_[--heldCount_];
    Tell({.type = WINDOW_EVENT_KEY_RELEASED, .key = key, .modifiers = modifiers});
}

void CWindowEvents::TellAllReleased() noexcept {
    while (heldCount_ > 0) TellReleased(held_[heldCount_ - 1].code, 0);
}

void CWindowEvents::Tell(TWindowEvent event) noexcept {
    event.width = size_.width;
    event.height = size_.height;
    const std::lock_guard lock(mutex_);
    if (handler_) handler_(event, user_);
}

CWindowEvents::THeldKey* CWindowEvents::Find(std::uint32_t code) {
    THeldKey* const end = held_.data() + heldCount_;
    THeldKey* const found =
        std::find_if(held_.data(), end, [code](const THeldKey& held) { return held.code == code; });
    return found == end ? nullptr : found;
}

bool SetWindowHandler(IVideoWindow& window, TWindowHandler handler, void* user) {
    // The identifier alone is not enough: applications may register a class of their own under it.
    if (window.GetClassId() != CVideoWindow::ClassId) return false;
    auto* const own = dynamic_cast<CVideoWindow*>(&window);
    if (!own) return false;
    own->GetEvents().SetHandler(handler, user);
    return true;
}

} // namespace vorlund
