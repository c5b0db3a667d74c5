// The command "repair".
#include "Commands.h"
#include "Diagnostics.h"
#include "OpenCauses.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/WavRepair.h>

#include <string>

using namespace vorlund;

namespace {

wstring Widen(const std::string& text) {
    return {text.begin(), text.end()};
}

/// "1 of 2 files needs a repair".
wstring Count(std::size_t count, std::size_t all, const char* one, const char* several) {
    return Widen(std::to_string(count) + " of " + std::to_string(all) + (all == 1 ? " file " : " files ") +
                 (count == 1 ? one : several));
}

} // namespace

void RunRepair(const TRepairOptions& options, const CDiagnostics& diagnostics) {
    std::size_t failed = 0;
    std::size_t wrong = 0;
    for (const std::string& name : options.files) {
        const wstring path = PathFromUtf8(name.c_str());
        const auto fail = [&](const wstring& reason) {
            wstring text = VRL_L("Cannot repair '") + path;
            text += VRL_L("': ");
            text += reason;
            if (options.files.size() == 1) throw TProgramError{text};
            diagnostics.PrintError(text.c_str());
            ++failed;
        };
        try {
            const TWavRepair repair = RepairWav(path.c_str(), options.isTrial);
            diagnostics.PrintField("File", path);
            for (const CString& change : repair.changes)
                diagnostics.PrintField(options.isTrial ? "Wrong" : "Mended", wstring(change.GetBuffer()));
            if (repair.changes.empty()) diagnostics.PrintField("Right", std::string("every size"));
            wrong += !repair.changes.empty();
        } catch (const CFileAccessException& error) {
            fail(error.GetReason() + DescribeCause(error));
        } catch (const CDataFormatException& error) {
            fail(error.GetReason());
        } catch (const CIOException& error) {
            fail(error.GetReason());
        }
    }
    if (failed > 0)
        throw TProgramError{Count(failed, options.files.size(), "cannot be repaired", "cannot be repaired")};
    if (options.isTrial && wrong > 0)
        throw TProgramError{Count(wrong, options.files.size(), "needs a repair", "need a repair")};
}
