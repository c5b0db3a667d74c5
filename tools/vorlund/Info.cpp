// The command "info".
#include "Commands.h"
#include "Diagnostics.h"
#include "InfoText.h"
#include "JsonWriter.h"
#include "Listings.h"
#include "SoundInfo.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/StreamErrors.h>

#include <cstdio>

using namespace vorlund;

namespace {

TSoundWishes GetWishes(const TInfoOptions& options) {
    return {.hasLevels = options.hasLevels,
            .picture = options.picture,
            .peaks = options.peaks,
            .points = options.points};
}

} // namespace

void RunInfo(const TInfoOptions& options, CDiagnostics& diagnostics) {
    const TSoundWishes wishes = GetWishes(options);
    if (options.inputs.size() > 1 && !(wishes.picture.empty() && wishes.peaks.empty()))
        throw TProgramError{VRL_L("--picture and --peaks are for one file")};
    if (wishes.picture == "-" || wishes.peaks == "-") diagnostics.KeepStandardOutputFree();
    CJsonWriter json;
    json.BeginObject().Key("files").BeginArray();
    std::size_t failed = 0;
    bool isFirst = true;
    for (const std::string& input : options.inputs) {
        // The others are looked at all the same.
        try {
            const TMediaInfo info = CollectInfo(input, wishes);
            if (!info.failure.empty()) ++failed;
            if (options.isJson) {
                WriteInfo(info, json);
            } else {
                PrintInfo(info, diagnostics, !isFirst);
            }
            isFirst = false;
        } catch (const CFileAccessException& error) {
            if (options.inputs.size() == 1) throw;
            ++failed;
            const wstring cause = DescribeOpenCause(GetOpenFailure().cause);
            diagnostics.PrintError((wstring(error.GetReason()) + VRL_L(": ") + cause).c_str());
        }
    }
    json.EndArray().EndObject();
    if (options.isJson) PrintJson(json);
    if (failed == 0) return;
    if (options.inputs.size() == 1)
        throw TProgramError{VRL_L("Cannot decode '") + PathFromUtf8(options.inputs.front().c_str()) +
                            VRL_L("'")};
    const std::string count = std::to_string(failed) + " of " + std::to_string(options.inputs.size());
    throw TProgramError{PathFromUtf8(count.c_str()) + VRL_L(" files cannot be decoded")};
}
