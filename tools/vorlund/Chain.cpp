#include "Chain.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

using namespace vorlund;

namespace {

/// Enough to recognise a file by; a file of a million chunks should not fill the screen.
constexpr int kShownChunks = 16;

} // namespace

wstring DescribeChain(const std::vector<TChainLink>& links) {
    wstring chain;
    for (const TChainLink& link : links) {
        if (!chain.empty()) chain.insert(0, VRL_L(" > "));
        chain.insert(0, link.className.GetBuffer());
    }
    return chain;
}

wstring DescribeChunks(const wchar* path) {
    const CInputStreamSelector source(path);
    const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    try {
        decoder->Connect(source.GetInputStreamTmp());
    } catch (const CDataFormatException&) {
        return {};
    }
    const auto chunks = CRefPtr<IObjectList>::Adopt(decoder->EnumerateChunks());
    const auto items = CRefPtr<IObjectEnumerator>::Adopt(chunks->EnumerateObjects());
    wstring text;
    for (int shown = 0; items->HasNext() && shown < kShownChunks; ++shown) {
        const auto item = CRefPtr<IObject>::Adopt(items->GetNext()).Query<IStringObject>();
        if (shown > 0) text += VRL_L(", ");
        text += VRL_L('"');
        text += item->GetString().GetBuffer();
        text += VRL_L('"');
    }
    if (items->HasNext()) text += VRL_L(", ...");
    return text;
}
