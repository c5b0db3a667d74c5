// Live pictures of what is played, in a window.
#pragma once

#include "Keyboard.h"
#include "Player.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/AudioPictures.h>
#include <vorlund/MediaClock.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WindowedOutput.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

/// A window whose pictures are those of the sound that is heard: the output is their clock.
class CPlayWindow {
public:
    /// \param title  of the window
    /// \param notice  is told of keys; lives longer
    ///
    /// Raises `TProgramError` without a display, a video device or the plug-in of the pictures.
    CPlayWindow(vorlund::TAudioPictureKind kind, const vorlund::wstring& title, vorlund::IAudioOutput& output,
                CEndNotice& notice);
    CPlayWindow(const CPlayWindow&) = delete;
    CPlayWindow& operator=(const CPlayWindow&) = delete;
    ~CPlayWindow();

    /// A key that was pressed in the window, in order.
    std::optional<TKey> TakeKey();

    /// How long it is until the next picture, a tenth of a second at most.
    std::chrono::milliseconds GetWait() const;

    /// Shows a picture of what the player plays when it is time for one. Returns the greatest peak since the
    /// last picture; nothing when the user has closed the window.
    std::optional<float> Show(CPlayer& player);

private:
    static void OnEvent(const vorlund::TWindowEvent& event, void* user);
    void Note(const vorlund::TWindowEvent& event);

    CEndNotice& notice_;
    const vorlund::CMediaClock clock_;
    vorlund::CRefPtr<vorlund::IAudioPictures> pictures_;
    vorlund::CRefPtr<vorlund::IVideoOutput> output_;
    vorlund::CRefPtr<vorlund::IWindowedOutput> windowed_;
    std::vector<std::uint32_t> picture_;
    vorlund::TDataFormat_AudioPcm format_;
    /// When the next picture is due, by the clock.
    double next_ = 0;
    std::mutex mutex_;
    std::deque<TKey> keys_;
};
