#include "DecodeAdvice.h"

#include "Decoding.h"
#include "Diagnostics.h"
#include "PluginTexts.h"

#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <vector>

using namespace vorlund;

namespace {

/// What other decoders of the same container object to, behind what the one does that got furthest.
wstring DescribeOthers(const CDecodeReport& report, const TDecodeEntry& furthest) {
    wstring text;
    for (const TDecodeEntry& entry : report.GetEntries()) {
        if (&entry == &furthest || entry.outcome != DECODE_REFUSED || entry.values.Length() == 0 ||
            !(entry.container == furthest.container))
            continue;
        text += VRL_L("; ");
        text += entry.className.GetBuffer();
        text += VRL_L(": ");
        text += entry.reason.GetBuffer();
        text.erase(text.find_last_not_of(VRL_L(' ')) + 1);
        text += VRL_L(" (") + wstring(entry.values.GetBuffer()) + VRL_L(")");
    }
    return text;
}

/// Whether there are plug-ins for files of this kind.
bool IsReadByPlugins(const CString& container) {
    const std::vector<TKnownContainer> known = ListKnownContainers();
    return std::any_of(known.begin(), known.end(), [&container](const TKnownContainer& kind) {
        return kind.name == container && kind.plugin.Length() > 0;
    });
}

/// What to do about a file that no decoder takes, behind why.
wstring AdviseOn(const CDecodeReport& report, IInputStream& source) {
    constexpr const wchar* kDamaged =
        VRL_L("; if other programs read it, let them convert it, else get it anew");
    const wstring plugin = report.GetPlugin().GetBuffer();
    if (!plugin.empty()) {
        // The reason names it already.
        const std::vector<TPluginReport> reports = GetFileReports();
        const TPluginReport* const known = FindPlugin(reports, plugin);
        if (!known || known->outcome == PLUGIN_LOADED) return {};
        return VRL_L(", which is left out: ") + wstring(known->Explain().GetBuffer());
    }
    if (source.GetLength() == 0) return VRL_L("; get it anew from where it comes");
    const TDecodeEntry* const furthest = report.GetFurthest();
    if (furthest && furthest->outcome != DECODE_CONNECTED)
        return DescribeOthers(report, *furthest) + kDamaged;
    if (IsReadByPlugins(report.GetContainer())) return kDamaged;
    return VRL_L("; 'vorlund codecs' lists what can be read");
}

} // namespace

CRefPtr<IInputStream> OpenDecoded(const CInputStreamSelector& source, const wstring& path) {
    CDecodeReport report;
    try {
        return DecodeSource(source, TDataFormat_AudioPcm::FormatId, report);
    } catch (const CDataFormatException&) {
        CheckReading(*source.GetInputStreamTmp(), path);
        // What the search raises says only that it failed.
        throw TProgramError{VRL_L("Cannot decode '") + path + VRL_L("': ") + report.Explain().GetBuffer() +
                            AdviseOn(report, *source.GetInputStreamTmp())};
    } catch (const CIOException& error) {
        throw TProgramError{VRL_L("Cannot decode '") + path + VRL_L("': ") + error.GetReason()};
    }
}
