#include "faults/Session.h"

#include "faults/ProcessHandles.h"
#include "support/Text.h"
#include "system/ProcessResources.h"

#include <vorlund/Exception.h>
#include <vorlund/String.h>
#include <vorlund/Vorlund.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <thread>

namespace vorlund::faults {
namespace {

/// How a run ended.
struct TOutcome {
    std::string text;
    bool hasRaised = false;
    bool hasFailed = false;
    /// What no run may do.
    std::string fault;
};

template <class TAct> void Try(TAct act, std::string& fault) {
    try {
        act();
    } catch (const CException& error) {
        fault = "closing raises " + test::Narrow(error.ToString().GetBuffer());
    } catch (const std::exception& error) {
        fault = std::string("closing raises ") + error.what();
    }
}

/// What `Close` does, for a library of which `Init` opened only a part.
void CloseAll(std::string& fault) {
    Try([] { v.Close(); }, fault);
    Try([] { v.GetObjectCounter().Close(); }, fault);
    Try([] { v.GetPluginStore().Close(); }, fault);
    Try([] { v.GetDeviceClassStore().Close(); }, fault);
    Try([] { v.GetCodecClassStore().Close(); }, fault);
    Try([] { v.GetClassStore().Close(); }, fault);
}

/// Runs the scenario; `start` begins the counting, with a fault or without.
template <class TStart> TOutcome Run(const TScenario& scenario, TStart start) {
    TOutcome outcome;
    CResult result;
    if (!scenario.opensItself) Try([] { v.Init(); }, outcome.fault);
    start();
    try {
        scenario.run(result);
    } catch (const CException& error) {
        Disarm();
        outcome.hasRaised = true;
        outcome.text = test::Narrow(error.ToString().GetBuffer());
    } catch (const TBroken& broken) {
        Disarm();
        outcome.hasRaised = true;
        outcome.fault = broken.text;
    } catch (const std::exception& error) {
        Disarm();
        outcome.hasRaised = true;
        outcome.text = error.what();
    }
    Disarm();
    outcome.hasFailed = HasFailed();
    CloseAll(outcome.fault);
    if (!outcome.hasRaised) outcome.text = result.GetText();
    return outcome;
}

TOutcome RunClean(const TScenario& scenario) {
    return Run(scenario, [] { StartCounting(); });
}

/// What a session compares every state with.
struct TBase {
    std::string text;
    std::size_t blocks = 0;
    /// Blocks that each run without a fault adds.
    std::size_t growth = 0;
    int handles = 0;
    int threads = 0;
};

class CSession {
public:
    explicit CSession(const TScenario& scenario) : scenario_(scenario) {
        base_.threads = test::CountThreads();
        // Tables that grow when they are needed first have grown then.
        for (int i = 0; i < 3; ++i) base_.text = RunClean(scenario_).text;
        // Some systems start a thread of their own when a process first needs it, and keep it.
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (test::CountThreads() > base_.threads && std::chrono::steady_clock::now() < limit) {
            std::this_thread::yield();
        }
        base_.threads = test::CountThreads();
        base_.blocks = CountBlocks();
        base_.handles = CountOpenHandles();
        if (scenario_.hasPlugins) {
            // The library's list of plug-ins grows with each opening.
            RunClean(scenario_);
            base_.growth = CountBlocks() - base_.blocks;
            Accept();
        }
        const TOutcome again = RunClean(scenario_);
        std::string fault = again.fault;
        if (again.hasRaised) {
            fault += again.text;
        } else if (again.text != base_.text) {
            fault = "'" + base_.text + "', then '" + again.text + "'";
        } else if (const auto rest = FindRest(0)) {
            fault = *rest;
        }
        isUsable_ = fault.empty();
        if (!isUsable_) Report("fault memory 0 once without a fault: %s", fault.c_str());
    }

    /// Whether the scenario works when nothing fails.
    bool IsUsable() const { return isUsable_; }

    void TryKind(std::size_t kind, const TPoint& first, bool isQuick) {
        RunClean(scenario_);
        const unsigned int count = GetCount(static_cast<TFaultKind>(kind));
        Report("calls %s %u", kKindNames[kind], count);
        if (count == 0) return;
        raised_ = same_ = other_ = 0;
        TPoint point = first;
        point.kind = kind;
        for (; point.n <= count; ++point.n, point.span = 0) {
            if (isQuick && point.n > kQuickCalls && point.n % kQuickStep != 0) continue;
            for (; point.span < kSpanNames.size(); ++point.span) TryPoint(point);
        }
        Report("done %s %u %u %u", kKindNames[kind], raised_, same_, other_);
    }

private:
    static constexpr unsigned int kQuickCalls = 20;
    static constexpr unsigned int kQuickStep = 17;

    void TryPoint(const TPoint& point) {
        Report("point %s %u %s", kKindNames[point.kind], point.n, kSpanNames[point.span]);
        const std::size_t firstBlock = GetNextBlock();
        std::string fault = RunPoint(point);
        if (fault.empty()) {
            if (auto rest = FindRest(firstBlock)) {
                // A table that has grown stays; what is lost each time is a leak.
                const std::size_t secondBlock = GetNextBlock();
                Accept();
                fault = RunPoint(point);
                rest = FindRest(secondBlock);
                if (fault.empty() && rest) fault = *rest;
            }
        }
        if (base_.growth > 0) Accept();
        if (fault.empty()) return;
        Report("fault %s %u %s %s", kKindNames[point.kind], point.n, kSpanNames[point.span], fault.c_str());
        Accept();
    }

    /// A run with the fault and one without; returns what was wrong.
    std::string RunPoint(const TPoint& point) {
        const TOutcome outcome = Run(scenario_, [&] {
            Arm(static_cast<TFaultKind>(point.kind), point.n, static_cast<TSpan>(point.span));
        });
        const std::string where = "; the call came from " + DescribeFault();
        const bool isSame = !outcome.hasRaised && outcome.text == base_.text;
        ++(outcome.hasRaised ? raised_ : isSame ? same_ : other_);
        if (!outcome.hasRaised && !isSame) {
            Report("other %s %u %s %s", kKindNames[point.kind], point.n, kSpanNames[point.span],
                   outcome.text.c_str());
        }
        const bool isWrong = !outcome.hasRaised && !isSame && scenario_.success &&
                             outcome.text.rfind(scenario_.success, 0) == 0;
        const TOutcome clean = RunClean(scenario_);
        if (!outcome.fault.empty()) return outcome.fault + where;
        if (isWrong) return "success is reported with " + outcome.text + "for " + base_.text + where;
        if (!clean.fault.empty()) return "the next run: " + clean.fault + where;
        if (clean.hasRaised) return "the next run raises " + clean.text + where;
        if (clean.text != base_.text) {
            return "the next run gives '" + clean.text + "' for '" + base_.text + "'" + where;
        }
        return {};
    }

    /// What there is more than at the beginning.
    std::optional<std::string> FindRest(std::size_t firstBlock) const {
        if (!test::ThreadsComeDownTo(base_.threads)) return "threads that do not end";
        if (CountOpenHandles() > base_.handles) return "handles that stay open";
        const std::size_t blocks = CountBlocks();
        // A run with a fault and one without have been.
        const std::size_t allowed = base_.blocks + 2 * base_.growth;
        if (blocks <= allowed) return {};
        std::string text = std::to_string(blocks - allowed) + " blocks that stay:";
        for (const std::string& line : DescribeBlocksSince(firstBlock)) text += " " + line + ",";
        return text.substr(0, 600);
    }

    void Accept() {
        base_.blocks = CountBlocks();
        base_.handles = CountOpenHandles();
    }

    const TScenario& scenario_;
    TBase base_;
    bool isUsable_ = false;
    unsigned int raised_ = 0;
    unsigned int same_ = 0;
    unsigned int other_ = 0;
};

} // namespace

void RunSession(const TScenario& scenario, const TPoint& first, std::size_t only, bool isQuick) {
    CSession session(scenario);
    if (!session.IsUsable()) return;
    for (std::size_t kind = first.kind; kind < kKindCount; ++kind) {
        if (only != kKindCount && kind != only) continue;
        session.TryKind(kind, kind == first.kind ? first : TPoint{}, isQuick);
    }
}

} // namespace vorlund::faults
