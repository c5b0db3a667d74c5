// What is between two processes here: a channel with a few messages of fixed size (ScanProtocol.h), a limit
// of time, and the end of the other process. Nothing that the other says is believed before it is whole, and
// before the process has ended well: the plug-in ran in it, and may have written anything.
#include "vorlund/api/plugins/PluginScan.h"

#include "vorlund/api/plugins/ChildProcess.h"
#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/api/plugins/ScanProtocol.h"
#include "vorlund/api/text/Printable.h"
#include "vorlund/data/file/FileSystem.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace vorlund::pluginscan {
namespace {

using TClock = std::chrono::steady_clock;

/// A good plug-in goes through so many processes. Damage may be deadly only at some of the addresses that the
/// system chooses anew for each.
constexpr int kScans = 3;

/// What has come of the messages.
class CAnswer {
public:
    /// The room for more bytes; one more than the messages have, so that a longer answer shows.
    void* GetRoom() { return bytes_ + size_; }
    std::size_t GetRoomSize() const { return sizeof(bytes_) - size_; }
    void Take(std::size_t count) { size_ += count; }

    bool IsTooLong() const { return size_ == sizeof(bytes_); }

    /// The result, or `PLUGIN_SCAN_GARBLED`.
    TPluginResult Read() const {
        constexpr TStage kStages[] = {TStage::Loading, TStage::Closing, TStage::Done};
        TMessage message = {};
        if (size_ != kSize) return {PLUGIN_SCAN_GARBLED};
        for (std::size_t i = 0; i < std::size(kStages); ++i) {
            std::memcpy(&message, bytes_ + i * sizeof(message), sizeof(message));
            if (message.mark != kMark || message.size != sizeof(message) || message.stage != kStages[i])
                return {PLUGIN_SCAN_GARBLED};
        }
        if ((message.outcome < PLUGIN_LOADED || message.outcome > PLUGIN_RAISED) &&
            message.outcome != PLUGIN_MISSING_LIBRARY && message.outcome != PLUGIN_BAD_TABLE)
            return {PLUGIN_SCAN_GARBLED};
        return {static_cast<TPluginOutcome>(message.outcome), message.code, ReadText(message.detail),
                static_cast<TExceptionType>(message.exceptionType), ReadText(message.exceptionMethod)};
    }

private:
    /// A text of a message, which may hold anything: for people, and up to its end in any case.
    template <std::size_t kRoom> static wstring ReadText(const char16_t (&text)[kRoom]) {
        const wstring units(text, std::find(text, text + kRoom, u'\0'));
        return MakePrintable(units);
    }

    static constexpr std::size_t kSize = 3 * sizeof(TMessage);

    char bytes_[kSize + 1];
    std::size_t size_ = 0;
};

/// The folder of a module's path; empty when the path is.
wstring FolderOf(const wstring& module) {
    return module.substr(0, module.rfind(pluginmodule::kSeparator) + 1);
}

TPluginResult ScanOnce(const wchar* helper, const wchar* file, TClock::time_point deadline) {
    CChildProcess process(helper, {file});
    if (!process.IsStarted()) return {PLUGIN_SCAN_NO_HELPER, process.GetError()};
    CAnswer answer;
    for (;;) {
        // Asked first: what was written before the end is there when the end is.
        const bool hasEnded = process.HasEnded();
        while (const std::size_t count = process.Read(answer.GetRoom(), answer.GetRoomSize()))
            answer.Take(count);
        if (answer.IsTooLong()) return {PLUGIN_SCAN_GARBLED};
        if (hasEnded) break;
        if (TClock::now() >= deadline) return {PLUGIN_SCAN_TOO_LATE};
        process.Wait();
    }
    if (process.GetEnd() != 0) return {PLUGIN_SCAN_DIED, process.GetEnd()};
    return answer.Read();
}

} // namespace

wstring FindHelper() {
    const wstring library = FolderOf(pluginmodule::GetLibraryPath());
    for (const wstring& folder : {FolderOf(pluginmodule::GetHostPath()), library,
                                  library.empty() ? library : library + pluginmodule::kProgramsFromLibrary}) {
        // Without a folder it would be one in the working folder.
        if (folder.empty()) continue;
        wstring path = folder + pluginmodule::kHelperName;
        if (filesystem::GetKind(path.c_str()) == filesystem::TEntryKind::File) return path;
    }
    return {};
}

TPluginResult Scan(const wchar* helper, const wchar* file) {
    const TClock::time_point deadline = TClock::now() + std::chrono::seconds(kMaxScanSeconds);
    TPluginResult result;
    for (int i = 0; i < kScans; ++i) {
        result = ScanOnce(helper, file, deadline);
        if (result.outcome != PLUGIN_LOADED) break;
    }
    return result;
}

} // namespace vorlund::pluginscan
