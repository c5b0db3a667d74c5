// A sound file while it is played.
#pragma once

#include "Levels.h"

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>
#include <vorlund/StreamSelector.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

/// Tells one thread that a stream has ended, which another one has read.
class CEndNotice {
public:
    void Tell();
    /// Waits until a stream has ended since the last call, at most so long.
    void Wait(std::chrono::milliseconds limit);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool hasEnded_ = false;
};

/// What somebody wants of the sound while it is heard.
enum class TListening { Nothing, Levels, Samples };

/// The sound in a file, from a frame of it on, as a stream for an audio output: it raises nothing, and ends
/// where decoding fails. Whoever plays it reads it on a thread of his own; meanwhile the owner only asks for
/// what is marked so.
class CPlayedFile {
public:
    /// \param name  UTF-8; "-" for the standard input, which is kept in memory
    /// \param notice  is told of each end; lives longer
    /// \param listening  what is found for `GetHeard`
    ///
    /// Raises `TProgramError`, which says why it cannot be played, and the library's exceptions.
    CPlayedFile(const std::string& name, CEndNotice& notice, TListening listening);
    CPlayedFile(const CPlayedFile&) = delete;
    CPlayedFile& operator=(const CPlayedFile&) = delete;
    /// Drops what the streams raise.
    ~CPlayedFile();

    const vorlund::wstring& GetPath() const { return path_; }
    const vorlund::TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// Frames of the whole sound, when they are known.
    std::optional<std::uint64_t> GetFrames() const { return frames_; }
    vorlund::IInputStream& GetStream() { return stream_; }

    /// The frame that is read next. Begins anew where the sound has no positions. Raises as the constructor.
    void Seek(std::uint64_t frame);

    /// \name While it is read, too
    /// @{
    /// The frame that is read next.
    std::uint64_t GetFrame() const;
    /// There is nothing more to read.
    bool HasEnded() const { return stream_.hasEnded; }
    CHeardSound& GetHeard() { return heard_; }
    /// @}

    /// Why it ended before its end; empty when it did not.
    vorlund::wstring GetFailure();

private:
    /// Part of its file: a class of objects would need the class store, as other threads make objects.
    class CReading final : public vorlund::CInputStreamImpl<vorlund::IInputStream> {
    public:
        explicit CReading(CPlayedFile& owner) : file(owner) {}

        std::uint32_t GetCapabilities() override {
            return vorlund::STREAM_CAPABILITY_READ | vorlund::STREAM_CAPABILITY_TELL;
        }
        std::int64_t GetLength() override;
        std::int64_t Tell() override { return static_cast<std::int64_t>(position.load()); }
        bool Eof() override { return hasEnded; }
        const vorlund::TDataFormat& GetFormat() override { return file.format_; }
        using CInputStreamImpl::Read;
        std::uint64_t Read(void* buffer, std::uint64_t size) override;

        CPlayedFile& file;
        /// Bytes from the beginning of the sound.
        std::atomic<std::uint64_t> position = 0;
        std::atomic<bool> hasEnded = false;
        vorlund::wstring failure;
    };

    void Decode();
    void Skip(std::uint64_t bytes);
    std::uint64_t Read(void* buffer, std::uint64_t size);

    const vorlund::wstring path_;
    CEndNotice& notice_;
    std::optional<vorlund::CInputStreamSelector> source_;
    vorlund::CRefPtr<vorlund::IInputStream> decoded_;
    vorlund::TDataFormat_AudioPcm format_;
    std::optional<std::uint64_t> frames_;
    const TListening listening_;
    CHeardSound heard_;
    CReading stream_{*this};
};
