#include "vorlund/data/codecs/DecodeRecorder.h"

#include "vorlund/data/codecs/ClassNames.h"
#include "vorlund/data/codecs/Container.h"

#include <vorlund/Stream.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace vorlund {
namespace {

bool CanBeReadAgain(IInputStream& stream) {
    constexpr std::uint32_t kNeeded =
        STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ;
    return (stream.GetCapabilities() & kNeeded) == kNeeded;
}

/// The beginning of the stream, as much as there is; the position is afterwards as before.
std::span<const std::uint8_t> ReadHead(IInputStream& stream, std::uint8_t (&head)[kContainerHead]) {
    const std::int64_t position = stream.Tell();
    stream.Seek(0);
    std::size_t filled = 0;
    while (filled < sizeof head) {
        const std::uint64_t count = stream.Read(head + filled, sizeof head - filled);
        if (count == 0) break;
        filled += static_cast<std::size_t>(std::min<std::uint64_t>(count, sizeof head - filled));
    }
    stream.Seek(position);
    return {head, filled};
}

} // namespace

CDecodeRecorder::CDecodeRecorder(CDecodeReport* report) : report_(report) {
    if (report_) report_->Clear();
}

void CDecodeRecorder::Add(TDecodeEntry entry) {
    if (report_) report_->entries_.push_back(std::move(entry));
}

void CDecodeRecorder::AddUntried(const CId& classId, TDecodeOutcome outcome) {
    if (!report_) return;
    TDecodeEntry entry;
    entry.classId = classId;
    entry.className = GetClassName(classId);
    entry.outcome = outcome;
    Add(std::move(entry));
}

void CDecodeRecorder::SetFound() {
    if (report_) report_->isFound_ = true;
}

void CDecodeRecorder::SetNotFound(IInputStream& source) {
    if (!report_) return;
    std::uint8_t bytes[kContainerHead];
    const TContainer* container = nullptr;
    try {
        if (!CanBeReadAgain(source)) return;
        const auto head = ReadHead(source, bytes);
        report_->isEmpty_ = head.empty();
        container = FindContainer(head);
    } catch (const CException&) {
        // The source is not what is reported on.
    }
    if (!container) return;
    report_->container_ = container->name;
    if (!container->plugin) return;
    const bool wasTried =
        std::any_of(report_->entries_.begin(), report_->entries_.end(),
                    [&](const TDecodeEntry& entry) { return entry.className == container->decoder; });
    if (!wasTried) report_->plugin_ = container->plugin;
}

CDecodeStep::CDecodeStep(CDecodeRecorder& recorder, const CId& classId, int depth) : recorder_(recorder) {
    // The notes of a search inside another one are not the outer candidate's.
    if (!recorder) {
        if (notes::takers.load(std::memory_order_relaxed) != 0) taker_.emplace(nullptr);
        return;
    }
    TDecodeEntry& entry = state_.emplace().entry;
    entry.classId = classId;
    entry.className = GetClassName(classId);
    entry.depth = depth;
    taker_.emplace(&state_->notes);
    state_->begin = std::chrono::steady_clock::now();
}

void CDecodeStep::End(TDecodeOutcome outcome) {
    if (!state_) return;
    TDecodeEntry& entry = state_->entry;
    const notes::TNotes& notes = state_->notes;
    entry.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - state_->begin).count();
    entry.outcome = outcome;
    entry.container = notes.container.c_str();
    entry.values = notes.values.c_str();
    entry.remarks = notes.remarks.c_str();
    entry.bytesRead = notes.bytesRead;
    recorder_.Add(std::move(entry));
}

void CDecodeStep::End(TDecodeOutcome outcome, const CException& raised) {
    if (!state_) return;
    TDecodeEntry& entry = state_->entry;
    entry.exceptionType = raised.GetType();
    entry.method = raised.GetMethod();
    entry.reason = raised.GetReason();
    End(outcome);
}

void CDecodeStep::EndRaised() {
    if (!state_) return;
    try {
        throw;
    } catch (const CException& raised) {
        End(DECODE_RAISED, raised);
    } catch (const std::exception& raised) {
        state_->entry.reason = raised.what();
        End(DECODE_RAISED);
    } catch (...) {
        End(DECODE_RAISED);
    }
}

} // namespace vorlund
