// A program in the place of vorlund-plugin-scan that answers as no good one does, or answers well without
// having looked. The name of the plug-in's file says how.
//   scan_helper PIPE FILE
#include "Arguments.h"
#include "vorlund-plugin-scan/ScanSide.h"

#include "vorlund/api/plugins/ScanProtocol.h"

#include "api/plugins/InheritedObject.h"

#include <vorlund/PluginReport.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace vorlund::test {
namespace {

using namespace pluginscan;

class CPipe {
public:
    explicit CPipe(const std::string& channel) : channel_(channel) {}

    void Write(const std::string& bytes) const {
        if (!Send(channel_, bytes.data(), bytes.size())) std::_Exit(2);
    }
    static TMessage Make(std::uint32_t mark, std::uint32_t size, TStage stage, int outcome = PLUGIN_BEGUN,
                         int code = 0) {
        TMessage message = {};
        message.mark = mark;
        message.size = size;
        message.stage = stage;
        message.outcome = outcome;
        message.code = code;
        return message;
    }
    void Write(const TMessage& message) const { Send(channel_, &message, sizeof(message)); }
    void Write(TStage stage, int outcome = PLUGIN_BEGUN, int code = 0) const {
        Write(Make(kMark, sizeof(TMessage), stage, outcome, code));
    }
    void WriteAnswer(int outcome, int code = 0) const {
        Write(TStage::Loading);
        Write(TStage::Closing);
        Write(TStage::Done, outcome, code);
    }

private:
    const std::string channel_;
};

int Run(const CPipe& pipe, const std::string& how) {
    if (how == "good") pipe.WriteAnswer(PLUGIN_LOADED);
    if (how == "declining") pipe.WriteAnswer(PLUGIN_DECLINED);
    if (how == "not-loadable") pipe.WriteAnswer(PLUGIN_NOT_LOADABLE, 126);
    if (how == "garbage") pipe.Write(std::string(3 * sizeof(TMessage), 'x'));
    if (how == "short") {
        pipe.Write(TStage::Loading);
        pipe.Write(TStage::Closing);
    }
    if (how == "cut") {
        pipe.Write(TStage::Loading);
        pipe.Write(TStage::Closing);
        pipe.Write(std::string(sizeof(TMessage) - 1, '\0'));
    }
    if (how == "long") {
        pipe.WriteAnswer(PLUGIN_LOADED);
        pipe.Write("x");
    }
    if (how == "flood")
        for (;;) pipe.Write(std::string(4096, 'x'));
    if (how == "other-mark") {
        pipe.Write(TStage::Loading);
        pipe.Write(CPipe::Make(kMark + 1, sizeof(TMessage), TStage::Closing));
        pipe.Write(TStage::Done, PLUGIN_LOADED);
    }
    if (how == "other-size") {
        pipe.Write(TStage::Loading);
        pipe.Write(TStage::Closing);
        pipe.Write(CPipe::Make(kMark, sizeof(TMessage) + 1, TStage::Done, PLUGIN_LOADED));
    }
    if (how == "other-order") {
        pipe.Write(TStage::Closing);
        pipe.Write(TStage::Loading);
        pipe.Write(TStage::Done, PLUGIN_LOADED);
    }
    if (how == "unknown-outcome") pipe.WriteAnswer(PLUGIN_SCAN_DIED);
    if (how == "no-outcome") pipe.WriteAnswer(PLUGIN_BEGUN);
    if (how == "failing") {
        pipe.WriteAnswer(PLUGIN_LOADED);
        return 3;
    }
    if (how == "dying") {
        pipe.WriteAnswer(PLUGIN_LOADED);
        EndQuietly();
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1;
    }
    if (how == "hanging") {
        pipe.Write(TStage::Loading);
        for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }
    // The outcome tells whether something of the application's came along.
    if (how == "inheriting") {
        UseInheritedObject();
        pipe.WriteAnswer(PLUGIN_DECLINED);
    }
    return 0;
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = GetArguments(argc, argv);
    if (arguments.size() != 2) return 64;
    const std::string how = std::filesystem::path(arguments[1]).stem().string();
    return vorlund::test::Run(vorlund::test::CPipe(arguments[0]), how);
}
