// The command "convert": several files at a time.
#include "Commands.h"
#include "ConvertPlan.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "OpenCauses.h"
#include "Progress.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::chrono::milliseconds kLook{100};

/// Work is counted in bytes of the inputs; an input of unknown size counts as so many.
constexpr std::uint64_t kUnknownSize = 1 << 20;

std::uint64_t GetWork(const TConvertJob& job) {
    return job.size > 0 ? job.size : kUnknownSize;
}

/// What became of all files so far. Threads share it.
class CConverting {
public:
    CConverting(const TConvertPlan& plan, const TConvertTarget& target)
        : plan_(plan), target_(target),
          done_(std::make_unique<std::atomic<std::uint64_t>[]>(plan.jobs.size())) {
        // A thread that has no memory can tell so.
        errors_.reserve(plan.jobs.size());
    }

    /// Converts files until there are none left. Raises nothing.
    void Work() {
        for (;;) {
            const std::size_t number = next_.fetch_add(1);
            if (number >= plan_.jobs.size() || isStopped_) break;
            try {
                Convert(number);
            } catch (...) {
                Fail(Describe(plan_.jobs[number]));
            }
        }
        const std::lock_guard lock(mutex_);
        ++ended_;
        changed_.notify_all();
    }
    void Stop() { isStopped_ = true; }

    /// Whether that many threads have ended; waits a little.
    bool HaveEnded(std::size_t threads) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLook, [&] { return ended_ == threads; });
    }
    std::uint64_t GetDone() const {
        std::uint64_t done = 0;
        for (std::size_t i = 0; i < plan_.jobs.size(); ++i) done += done_[i];
        return done;
    }
    /// What went wrong; an empty text when memory has ended even for that. After the threads.
    const std::vector<wstring>& GetErrors() const { return errors_; }
    std::size_t GetFailed() const { return failed_; }
    std::size_t GetSkipped() const { return skipped_; }
    std::size_t GetConverted() const { return converted_; }
    std::uint64_t GetClipped() const { return clipped_; }

private:
    struct TStopped {};

    void Convert(std::size_t number) {
        const TConvertJob& job = plan_.jobs[number];
        try {
            const TConverted converted = ConvertFile(job, *plan_.type, target_, [&](double share) {
                done_[number] = static_cast<std::uint64_t>(share * static_cast<double>(GetWork(job)));
                if (isStopped_) throw TStopped{};
            });
            done_[number] = GetWork(job);
            ++(converted.isSkipped ? skipped_ : converted_);
            clipped_ += converted.clipped;
        } catch (const TStopped&) {
            // Whoever has stopped it tells why.
        }
    }

    void Fail(wstring reason) {
        ++failed_;
        // What the failure has left locked must not be in the way of other threads.
        v.GiveBackLocks();
        const std::lock_guard lock(mutex_);
        errors_.push_back(std::move(reason));
    }

    /// The exception that is being handled, as a line; an empty one when there is no memory for it.
    static wstring Describe(const TConvertJob& job) noexcept {
        try {
            return DescribeFailure(job);
        } catch (...) {
            return {};
        }
    }
    static wstring DescribeFailure(const TConvertJob& job) {
        const auto behind = [&job](const wchar* reason) {
            return VRL_L("Cannot convert '") + PathFromUtf8(job.input.c_str()) + VRL_L("': ") + reason;
        };
        try {
            throw;
        } catch (const TProgramError& error) {
            return error.text;
        } catch (const CFileAccessException& error) {
            return error.GetReason() + DescribeCause(error);
        } catch (const CException& error) {
            return behind(error.GetReason());
        } catch (const std::bad_alloc&) {
            return behind(VRL_L("Out of memory"));
        } catch (const std::exception& error) {
            return behind(PathFromUtf8(error.what()).c_str());
        }
    }

    const TConvertPlan& plan_;
    const TConvertTarget& target_;
    std::unique_ptr<std::atomic<std::uint64_t>[]> done_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> isStopped_ = false;
    std::atomic<std::size_t> failed_ = 0;
    std::atomic<std::size_t> skipped_ = 0;
    std::atomic<std::size_t> converted_ = 0;
    std::atomic<std::uint64_t> clipped_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t ended_ = 0;
    std::vector<wstring> errors_;
};

/// The threads of a conversion; they have ended when this has.
class CWorkers {
public:
    CWorkers(CConverting& converting, std::size_t count) : converting_(converting) {
        threads_.reserve(count);
        try {
            while (threads_.size() < count) threads_.emplace_back([&converting] { converting.Work(); });
        } catch (...) {
            // With fewer threads it takes longer.
            if (threads_.empty()) throw;
        }
    }
    CWorkers(const CWorkers&) = delete;
    CWorkers& operator=(const CWorkers&) = delete;
    ~CWorkers() {
        converting_.Stop();
        for (std::thread& thread : threads_) thread.join();
    }

    std::size_t GetCount() const { return threads_.size(); }

private:
    CConverting& converting_;
    std::vector<std::thread> threads_;
};

wstring Counted(std::uint64_t count, const wchar* one, const wchar* many) {
    return PathFromUtf8(std::to_string(count).c_str()) + VRL_L(" ") + (count == 1 ? one : many);
}

} // namespace

void RunConvert(const TConvertOptions& options, CDiagnostics& diagnostics) {
    if (options.output == "-") diagnostics.KeepStandardOutputFree();
    const TConvertPlan plan = MakeConvertPlan(options.inputs, options.output, options.type);
    std::uint64_t work = 0;
    for (const TConvertJob& job : plan.jobs) work += GetWork(job);
    const std::size_t wanted =
        options.jobs > 0 ? options.jobs : std::max(std::thread::hardware_concurrency(), 1U);

    CConverting converting(plan, options.target);
    {
        const CInterrupt interrupt;
        CProgress progress(work);
        const CWorkers workers(converting, std::min(wanted, plan.jobs.size()));
        while (!converting.HaveEnded(workers.GetCount())) {
            if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
            progress.Show(converting.GetDone());
        }
    }
    for (const wstring& error : converting.GetErrors())
        diagnostics.PrintError(error.empty() ? VRL_L("Out of memory") : error.c_str());

    diagnostics.PrintField("Converted", Counted(converting.GetConverted(), VRL_L("file"), VRL_L("files")));
    if (converting.GetSkipped() > 0)
        diagnostics.PrintField("Left out", Counted(converting.GetSkipped(), VRL_L("file that is no sound"),
                                                   VRL_L("files that are no sound")));
    if (converting.GetClipped() > 0)
        diagnostics.PrintField("Clipped",
                               Counted(converting.GetClipped(), VRL_L("sample"), VRL_L("samples")));
    if (converting.GetFailed() > 0)
        throw TProgramError{
            Counted(converting.GetFailed(), VRL_L("of "), VRL_L("of ")) +
            Counted(plan.jobs.size(), VRL_L("file was not converted"), VRL_L("files were not converted"))};
}
