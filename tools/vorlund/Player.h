// Plays a list of files on an audio output, without a gap between them.
#pragma once

#include "PlayedFile.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/RefPtr.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct TPlayedList {
    /// UTF-8; "-" for the standard input.
    std::vector<std::string> files;
    /// How often the list is played; 0 for without end.
    std::uint64_t times = 1;
    /// Where the first file begins the first time, in seconds.
    double from = 0;
    /// What `CPlayer::TakeHeard` finds.
    TListening listening = TListening::Nothing;
};

/// Where playing is: what is heard now.
struct TPlaying {
    /// Of `TPlayedList::files`, from 0 on.
    std::size_t number = 0;
    /// In the file, in seconds.
    double time = 0;
    /// Of the file, in seconds, when it is known.
    std::optional<double> length = {};
};

/// Gives files to an output before their time, and knows which one is heard. One thread.
class CPlayer {
public:
    /// \param onBegin  is told of each file that begins to be heard
    /// \param onFailure  is told why a file is not played, or not to its end, once for each
    CPlayer(TPlayedList list, std::function<void(const vorlund::wstring& path)> onBegin,
            std::function<void(const vorlund::wstring& reason)> onFailure);
    CPlayer(const CPlayer&) = delete;
    CPlayer& operator=(const CPlayer&) = delete;
    /// Takes everything back from the output.
    ~CPlayer();

    /// Opens the first file that can be played; null when there is none. Its format is the one to open the
    /// output with.
    const vorlund::TDataFormat_AudioPcm* Begin();

    /// Plays on an output that was opened for so many frames a second, from now on; it lives longer.
    void PlayOn(vorlund::IAudioOutput& output, std::uint32_t rate);

    /// Gives what the output may need before the next call, and finds out what is heard. Returns false when
    /// everything has been heard.
    bool Update();

    /// Waits until there may be something to do for `Update`, or somebody tells `GetNotice`, at most so long.
    void Wait(std::chrono::milliseconds limit) { notice_.Wait(limit); }
    CEndNotice& GetNotice() { return notice_; }

    TPlaying GetPlaying() const;
    /// The greatest peak since the last call, of what was heard, which the sink is given.
    float TakeHeard(const CHeardSound::TSink& sink = {});
    /// Of what the sink is given; null when nothing is heard.
    const vorlund::TDataFormat_AudioPcm* GetHeardFormat() const;
    /// Files that were not played, or not to their end.
    std::size_t GetFailed() const;

    /// \name Jumps
    /// What the output has not yet taken is dropped.
    /// @{
    /// In the file that is heard. Behind its end comes the next file.
    void MoveBy(double seconds);
    /// To the beginning of the next file. Behind the last one everything has been heard.
    void GoToNext();
    /// To the beginning of the file before; of this one where that is the first.
    void GoToPrevious();
    /// @}

private:
    /// A file that was given to the output.
    struct TGiven {
        std::unique_ptr<CPlayedFile> file;
        /// Its place in the list, where all rounds are counted.
        std::uint64_t place = 0;
        /// The frame of the file at which it begins, and of the output where that is heard.
        std::uint64_t firstFrame = 0;
        std::uint64_t beginsAt = 0;
        /// The frame of the output behind it; once the output has read it.
        std::optional<std::uint64_t> endsAt = {};
        bool isTold = false;
    };

    bool HasPlace(std::uint64_t place) const;
    std::size_t GetNumber(std::uint64_t place) const {
        return static_cast<std::size_t>(place % list_.files.size());
    }
    std::unique_ptr<CPlayedFile> OpenNext();
    void Give(std::unique_ptr<CPlayedFile> file, std::uint64_t place, bool isTold = false);
    void GiveAhead();
    void FindEnds();
    void NoteEnd(TGiven& given);
    void Fail(std::size_t number, const vorlund::wstring& reason);
    void JumpTo(std::uint64_t place);
    bool IsHeard(const TGiven& given);
    /// The frame of the file that is heard.
    std::uint64_t GetHeardFrame(const TGiven& given) const;

    TPlayedList list_;
    std::function<void(const vorlund::wstring&)> onBegin_;
    std::function<void(const vorlund::wstring&)> onFailure_;
    /// Of each file of the list, whether it failed.
    std::vector<bool> failed_;
    CEndNotice notice_;
    vorlund::IAudioOutput* output_ = nullptr;
    std::uint32_t rate_ = 0;
    /// What `Begin` has opened.
    std::unique_ptr<CPlayedFile> first_;
    /// The place that `OpenNext` opens.
    std::uint64_t next_ = 0;
    /// Files without sound that were opened last.
    std::size_t empty_ = 0;
    /// The first one is heard, or was the last to be.
    std::deque<TGiven> given_;
};
