// The thread in which Media Foundation works for one sound, so that nobody waits for it longer than a limit.
#pragma once

#include "MediaReader.h"

#include <memory>
#include <optional>
#include <vector>

class CMediaThread {
public:
    /// The longest time for one answer.
    static constexpr DWORD kMaxMilliseconds = 10'000;

    /// What came of one call.
    struct TAnswer {
        std::optional<TMediaFailure> failure;
        vorlund::TDataFormat_AudioPcm format;
        std::vector<std::uint8_t> piece;
        bool isAtEnd = false;
    };

    explicit CMediaThread(std::shared_ptr<const CFileCopy> file, DWORD milliseconds = kMaxMilliseconds);
    CMediaThread(const CMediaThread&) = delete;
    CMediaThread& operator=(const CMediaThread&) = delete;
    /// Waits for its end, within the limit. After it, the thread is left to itself with everything that it
    /// uses, the module included, and ends when the system lets it.
    ~CMediaThread();

    /// Has the file opened, the first time, or the next piece fetched; valid until the next call. Null when
    /// there is no answer within the limit, and from then on.
    const TAnswer* Ask();

private:
    struct TTalk;
    static DWORD WINAPI Work(void* talk);

    const DWORD limit_;
    std::shared_ptr<TTalk> talk_;
    HANDLE thread_ = nullptr;
    bool isSilent_ = false;
};
