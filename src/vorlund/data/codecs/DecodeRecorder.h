// How a search fills a report. Without a report, nothing here costs more than a comparison.
#pragma once

#include "vorlund/data/base/NoteTaking.h"

#include <vorlund/DecodeReport.h>

#include <chrono>
#include <optional>

namespace vorlund {

/// Writes into a report, or nowhere.
class CDecodeRecorder {
public:
    /// Empties `report`; null for none.
    explicit CDecodeRecorder(CDecodeReport* report);

    explicit operator bool() const { return report_ != nullptr; }

    void Add(TDecodeEntry entry);
    /// For a candidate that is not tried at all.
    void AddUntried(const CId& classId, TDecodeOutcome outcome);

    /// The search is over and has found a chain.
    void SetFound();
    /// The search is over without one: tells from the first bytes of `source` what it is.
    void SetNotFound(IInputStream& source);

private:
    CDecodeReport* report_;
};

/// One candidate that is being connected, for the length of a block: takes the notes, measures the time.
class CDecodeStep {
public:
    CDecodeStep(CDecodeRecorder& recorder, const CId& classId, int depth);
    CDecodeStep(const CDecodeStep&) = delete;
    CDecodeStep& operator=(const CDecodeStep&) = delete;
    ~CDecodeStep() = default;

    /// How it ended; with what was raised.
    void End(TDecodeOutcome outcome);
    void End(TDecodeOutcome outcome, const CException& raised);
    /// In a handler, for whatever else was raised.
    void EndRaised();

private:
    struct TState {
        TDecodeEntry entry;
        notes::TNotes notes;
        std::chrono::steady_clock::time_point begin;
    };

    CDecodeRecorder& recorder_;
    /// Only with a report.
    std::optional<TState> state_;
    std::optional<notes::CTaker> taker_;
};

} // namespace vorlund
