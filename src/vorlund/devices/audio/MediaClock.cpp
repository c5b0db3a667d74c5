#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/MediaClock.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <limits>
#include <mutex>

namespace vorlund {

struct CMediaClock::TData : TClassMemory {
    /// Seconds of what the time goes by, from an unspecified beginning; where it was last, while the output
    /// has no position.
    double Look() {
        if (!output) {
            if (isRunning) seen = static_cast<double>(waiting::NowNanoseconds()) * 1e-9;
            return seen;
        }
        try {
            if (output->GetState() != AUDIO_STATE_CLOSED)
                seen = static_cast<double>(output->GetPosition()) / output->GetFormat().samplesPerSec;
        } catch (const CInvalidStateException&) {
            // It has just been closed.
        }
        return seen;
    }
    double GetTime() {
        time = std::max(time, Look() + offset);
        return time;
    }
    void SetTime(double seconds) {
        offset = seconds - Look();
        time = seconds;
    }
    bool IsStill() { return output ? output->GetState() != AUDIO_STATE_RUNNING : !isRunning; }

    std::mutex mutex;
    CRefPtr<IAudioOutput> output;
    bool isRunning = false;
    double seen = 0;
    /// From what is seen to the time.
    double offset = 0;
    /// The last that was told.
    double time = 0;
};

CMediaClock::CMediaClock() : data_(new TData) {}

CMediaClock::CMediaClock(IAudioOutput* output) : data_(new TData) {
    data_->output = CRefPtr<IAudioOutput>::Share(output);
}

CMediaClock::~CMediaClock() {
    delete data_;
}

void CMediaClock::Start() {
    const std::lock_guard lock(data_->mutex);
    if (data_->output || data_->isRunning) return;
    data_->isRunning = true;
    data_->SetTime(data_->time);
}

void CMediaClock::Stop() {
    const std::lock_guard lock(data_->mutex);
    if (data_->output || !data_->isRunning) return;
    data_->GetTime();
    data_->isRunning = false;
}

double CMediaClock::GetTime() const {
    const std::lock_guard lock(data_->mutex);
    return data_->GetTime();
}

void CMediaClock::SetTime(double seconds) {
    const std::lock_guard lock(data_->mutex);
    data_->SetTime(seconds);
}

double CMediaClock::GetWait(double time) const {
    const std::lock_guard lock(data_->mutex);
    const double left = time - data_->GetTime();
    if (left <= 0) return 0;
    return data_->IsStill() ? std::numeric_limits<double>::infinity() : left;
}

} // namespace vorlund
