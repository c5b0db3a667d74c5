#include <vorlund/DecodeReport.h>

#include "vorlund/api/text/TextFormat.h"
#include "vorlund/data/base/StreamChain.h"
#include "vorlund/data/codecs/ClassNames.h"

#include <vorlund/DataFormat.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace vorlund {
namespace {

bool IsEmpty(const CString& text) {
    return text.Length() == 0;
}

bool HasRecognised(const TDecodeEntry& entry) {
    return entry.outcome == DECODE_CONNECTED || entry.outcome == DECODE_DIED || !IsEmpty(entry.container);
}

/// What an entry says against its input: the reason, and in brackets the values.
wstring Objection(const TDecodeEntry& entry) {
    wstring text = IsEmpty(entry.reason) ? wstring(VRL_L("refused")) : wstring(entry.reason.GetBuffer());
    // Some of the texts end in a blank.
    while (!text.empty() && text.back() == VRL_L(' ')) text.pop_back();
    if (!IsEmpty(entry.values)) text += VRL_L(" (") + wstring(entry.values.GetBuffer()) + VRL_L(')');
    return text;
}

const wchar* DescribeOutcome(TDecodeOutcome outcome) {
    switch (outcome) {
    case DECODE_CONNECTED:
        return VRL_L("connected");
    case DECODE_REFUSED:
        return VRL_L("refused");
    case DECODE_UNREADABLE:
        return VRL_L("unreadable");
    case DECODE_RAISED:
        return VRL_L("raised");
    case DECODE_NOT_CREATED:
        return VRL_L("cannot be created");
    case DECODE_FORBIDDEN:
        return VRL_L("forbidden");
    case DECODE_DIED:
        return VRL_L("died");
    }
    return VRL_L("");
}

wstring DescribeEntry(const TDecodeEntry& entry) {
    wstring line(static_cast<std::size_t>(std::max(entry.depth, 0)) * 2, VRL_L(' '));
    line += entry.className.GetBuffer();
    line += VRL_L(": ");
    line += DescribeOutcome(entry.outcome);
    if (!IsEmpty(entry.container)) line += VRL_L(", ") + wstring(entry.container.GetBuffer());
    if (!IsEmpty(entry.reason) || !IsEmpty(entry.values)) line += VRL_L(", ") + Objection(entry);
    if (!IsEmpty(entry.method)) {
        line += VRL_L(", ");
        line += CException::GetTypeName(entry.exceptionType);
        line += VRL_L(" of ") + wstring(entry.method.GetBuffer());
    }
    if (!IsEmpty(entry.remarks)) line += VRL_L(", ") + wstring(entry.remarks.GetBuffer());
    if (entry.outcome == DECODE_NOT_CREATED || entry.outcome == DECODE_FORBIDDEN) return line;
    wchar figures[64];
    FormatArguments(figures, std::size(figures), VRL_L(", %llu bytes, %.3f ms"),
                    static_cast<unsigned long long>(entry.bytesRead), entry.seconds * 1000);
    return line + figures;
}

} // namespace

CString GetClassName(const CId& classId) {
    try {
        return services::FindClassName(classId);
    } catch (const CClassNotFoundException&) {
        return classId.ToString().c_str();
    }
}

CDecodeReport::CDecodeReport() = default;
CDecodeReport::CDecodeReport(const CDecodeReport&) = default;
CDecodeReport& CDecodeReport::operator=(const CDecodeReport&) = default;
CDecodeReport::~CDecodeReport() = default;

const TDecodeEntry* CDecodeReport::GetFurthest() const {
    const auto rank = [](const TDecodeEntry& entry) {
        return std::tuple(entry.outcome == DECODE_DIED, HasRecognised(entry), entry.depth, entry.bytesRead);
    };
    const auto furthest =
        std::max_element(entries_.begin(), entries_.end(),
                         [&](const auto& left, const auto& right) { return rank(left) < rank(right); });
    return furthest != entries_.end() && HasRecognised(*furthest) ? &*furthest : nullptr;
}

CString CDecodeReport::Explain() const {
    if (isFound_) return {};
    wstring text;
    const TDecodeEntry* const furthest = GetFurthest();
    if (furthest && furthest->outcome == DECODE_DIED) {
        text = wstring(furthest->className.GetBuffer()) + VRL_L(": ") + Objection(*furthest);
    } else if (furthest && furthest->outcome != DECODE_CONNECTED) {
        text = wstring(furthest->container.GetBuffer()) + VRL_L(": ") + Objection(*furthest);
    } else if (furthest) {
        text = wstring(furthest->className.GetBuffer()) + VRL_L(" reads it, and nothing goes on from there");
    } else if (!IsEmpty(container_)) {
        text = wstring(container_.GetBuffer()) + VRL_L(": no loaded decoder reads it");
    } else if (isEmpty_) {
        text = VRL_L("it is empty");
    } else if (entries_.empty()) {
        text = VRL_L("no decoder is registered");
    } else {
        text = VRL_L("no loaded decoder knows this kind of file");
    }
    if (!IsEmpty(plugin_)) text += VRL_L("; try the plug-in '") + wstring(plugin_.GetBuffer()) + VRL_L("'");
    return text.c_str();
}

CString CDecodeReport::ToString() const {
    wstring text;
    for (const TDecodeEntry& entry : entries_) {
        if (!text.empty()) text += VRL_L('\n');
        text += DescribeEntry(entry);
    }
    return text.c_str();
}

void CDecodeReport::Clear() {
    *this = CDecodeReport();
}

std::vector<TChainLink> ListChain(IInputStream& end) {
    std::vector<TChainLink> links;
    auto stream = CRefPtr<IInputStream>::Share(&end);
    while (stream && links.size() < kMaxChain) {
        const CId classId = stream->GetClassId();
        const auto named = stream.Query<INamedLink>();
        links.push_back(
            {classId, named ? named->GetLinkName() : GetClassName(classId), stream->GetFormat().id});
        stream = NextInChain(stream);
    }
    return links;
}

} // namespace vorlund
