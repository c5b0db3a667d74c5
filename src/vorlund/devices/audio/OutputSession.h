// An output between its opening and its closing.
#pragma once

#include "vorlund/devices/audio/AudioFormats.h"
#include "vorlund/devices/audio/OutputClient.h"
#include "vorlund/devices/audio/WriteQueue.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/Event.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlund {

/// What belongs to the output and not to one of its openings.
struct TOutputCommon {
    std::atomic<float> volume = 1;
    /// No stream is playing.
    CEvent idle;
};

/// How an output is to be opened.
struct TOutputOpening {
    IAudioPort* port;
    bool reopens;
    TDataFormat_AudioPcm format;
    double latency;
};

// Frames come from three places, and never from two at once: `Write` converts into the ring itself, on the
// thread that calls it; where the device has another rate it fills a queue, and the feeder, a thread of the
// session, reads the resampler behind that; and the feeder reads the streams. The port's thread takes frames
// out of the ring and wakes the feeder, which wakes everybody else: whoever waits does so under `mutex_` for
// `changed_`.
//
// The feeder holds no lock while it reads. So a stream may call the output, and `Flush`, `Close` and the last
// release of the output may come from inside a stream: they leave the work to the feeder, which does it when
// the stream has returned.
//
// Whoever waits for the feeder to be quiet (`WaitUntilReady`) needs to know that it has seen everything the
// port has told: `told_` is counted up by the port, and the feeder keeps in `seen_` what it was before it
// looked and found nothing to do.
//
// A lost port that is to be opened again is closed and opened by the feeder, which owns it while
// `isPortOpen_` is false. What is in the ring stays there; when the new device has another format, it and
// everything that is still to be read is converted once more.
class COutputSession final : public COutputClient {
public:
    /// Opens the port and starts it. Raises what `OpenOutput` does.
    static std::shared_ptr<COutputSession> Open(const TOutputOpening& opening,
                                                const std::shared_ptr<TOutputCommon>& common);
    /// Not for others: see `Open`.
    COutputSession(const TOutputOpening& opening, const std::shared_ptr<TOutputCommon>& common);

    /// \name The operations of the output
    /// @{
    std::uint64_t Write(const void* buffer, std::uint64_t size);
    std::uint64_t GetWritable();
    void Play(IInputStream* stream);
    std::uint32_t GetPlayingStreams();
    wstring GetStreamError();
    void SetPaused(bool isPaused);
    bool Drain();
    void Flush();
    std::uint64_t GetPosition();
    std::uint64_t GetDelay();
    std::uint64_t GetXruns();
    TAudioState GetState();
    const TDataFormat_AudioPcm& GetFormat() const { return format_; }
    const TDataFormat_AudioPcm& GetDeviceFormat();
    double GetLatency();
    /// @}

    /// Ends everything and closes the port; once. Returns the feeder when it is the calling thread, to be
    /// joined by another one. Raises what the port raises, when all is done.
    std::thread End();

    void WaitUntilReady(std::uint32_t frames) override;

private:
    using TLock = std::unique_lock<std::mutex>;

    void OpenPort();
    void SetDevice(const TDataFormat_AudioPcm& device, const TAudioPortFormat& granted);
    std::unique_ptr<CWriteQueue> MakeQueue(const TDataFormat_AudioPcm& device, std::size_t ringFrames);

    bool IsOnFeeder() const { return std::this_thread::get_id() == feederId_; }
    /// Whether a wait for the device is in vain.
    bool IsGone() const { return isLost_ && !reopens_; }
    /// Whether everything before the end has been read and put into the ring.
    bool IsReadOut() const;
    bool IsQuiet() const;
    /// Frames of the opened format that `Write` has room for.
    std::size_t GetWriteRoom() const;
    std::size_t PutWritten(const std::byte* frames, std::size_t count);
    /// Puts as many frames as there is room for behind the others.
    std::size_t Put(const std::byte* frames, std::size_t count, const CFrameConversion& conversion);

    /// Of the device's frames, since it was opened: those that have left the ring or will, and those that
    /// have been heard.
    std::uint64_t GetQueued() const { return ring_->GetWritten() - dropped_; }
    std::uint64_t GetHeard();
    std::uint64_t ToOpened(std::uint64_t frames) const;
    /// What follows the frames in the ring is an end, and no gap.
    void NoteEndOfFrames() { clock_->NoteEnd(GetQueued()); }
    /// Waits until something has changed; the feeder looks for it.
    void WaitForChange(TLock& lock);
    void Tell();

    /// \name Feeder
    /// @{
    void RunFeeder();
    bool FeedOnce(TLock& lock);
    void Rest(TLock& lock, std::uint32_t told);
    std::int64_t GetNextLook();
    bool CanRead() const;
    void ReadSome(TLock& lock);
    void EndSource();
    void DropStreams(TLock& lock);
    /// What the queue's resampler reads.
    std::uint64_t ReadWritten(void* buffer, std::uint64_t size);
    bool IsSegmentOver(std::uint64_t emptySince) const;
    bool MayReopen() const;
    void Reopen(TLock& lock);
    /// Everything that is still to be heard, for a device of that format.
    void ChangeFormat(TLock& lock, const TDataFormat_AudioPcm& device, const TAudioPortFormat& granted);
    std::vector<std::byte> TakeRemains(TLock& lock);
    /// @}

    IAudioPort* const port_;
    const bool reopens_;
    const TDataFormat_AudioPcm format_;
    const double latency_;
    const std::shared_ptr<TOutputCommon> common_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::thread feeder_;
    std::thread::id feederId_;

    /// \name Under `mutex_`
    /// @{
    bool isEnded_ = false;
    bool isPortOpen_ = false;
    /// Counts `Flush`.
    std::uint32_t generation_ = 0;
    bool isWriting_ = false;
    std::uint32_t waiters_ = 0;
    std::uint32_t drainers_ = 0;
    /// Frames of the ring that were dropped.
    std::uint64_t dropped_ = 0;
    std::uint64_t lastHeard_ = 0;
    /// What was heard of devices with other formats, in frames of the opened one, and the gaps there.
    std::uint64_t heardBefore_ = 0;
    std::uint64_t gapsBefore_ = 0;
    /// From the opened format to the device's; without a queue.
    CFrameConversion conversion_;
    /// Null where the device has the opened rate.
    std::unique_ptr<CWriteQueue> queue_;
    /// Frames that were written into the present segment, and frames of the device that it has become.
    std::uint64_t segmentIn_ = 0;
    std::uint64_t segmentOut_ = 0;
    /// Another format is taken over: nothing may be written meanwhile.
    bool isChanging_ = false;
    /// What a device of another format has left; before everything else.
    CRefPtr<IInputStream> remains_;
    /// With a reference each, in the format of the device. Those that are to be dropped are the first
    /// `dropCount_` ones; only the feeder takes one out.
    std::deque<IInputStream*> streams_;
    std::size_t dropCount_ = 0;
    std::uint32_t seen_ = 0;
    bool isResting_ = false;
    /// Who waited when the feeder began to rest.
    std::uint32_t restWaiters_ = 0;
    std::uint32_t restDrainers_ = 0;
    wstring streamError_;
    /// The last one is the present one; references to the others are still in use.
    std::deque<TDataFormat_AudioPcm> deviceFormats_;
    double deviceLatency_ = 0;
    /// @}

    /// \name Of the feeder
    /// @{
    /// What was read, and how many bytes of it are a part of a frame.
    std::vector<std::byte> block_;
    std::size_t partBytes_ = 0;
    /// The last `Flush` that it has seen.
    std::uint32_t readGeneration_ = 0;
    /// Of a lost device: when it may be tried again, and how far it was when that was tried last.
    std::int64_t nextOpening_ = 0;
    std::uint64_t passedAtOpening_ = 0;
    /// @}
};

} // namespace vorlund
