// The search for a chain of decoders.
//
// Each call has candidates of its own, one object per record, in the order of the records. With a wanted
// format the search goes depth first: connect the first free candidate that takes the current stream, and go
// on from there. Without one it takes the first free candidate that accepts, again and again, until none
// does.
//
// A candidate is free until it is connected, and it stays connected when the branch that it opened leads
// nowhere: so each is connected at most once per search, which bounds the whole by the square of their
// number.
#include "vorlund/data/codecs/DecoderSearch.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>

#include <algorithm>
#include <iterator>

namespace vorlund {
namespace {

constexpr CId kMediaFormats[] = {TDataFormat_AudioPcm::FormatId, TDataFormat_ImageRgb::FormatId,
                                 TDataFormat_VideoRgb::FormatId, OTHER_MEDIA_FORMAT_ID};

/// A chain has at most one decoder more than this.
constexpr int kMaxDepth = 8;

/// Media data are final: nothing decodes them further.
bool IsMediaFormat(const CId& format) {
    return std::find(std::begin(kMediaFormats), std::end(kMediaFormats), format) != std::end(kMediaFormats);
}

/// A new decoder, or nothing.
CRefPtr<IInputStreamFilter> CreateDecoder(const CId& classId) {
    try {
        return CreateAs<IInputStreamFilter>(classId);
    } catch (const CClassNotFoundException&) {
        return {};
    }
}

bool IsConnected(IInputStreamFilter& filter) {
    auto stream = CRefPtr<IInputStream>::Adopt(filter.GetInputStream());
    const bool connected = static_cast<bool>(stream);
    stream.Reset();
    return connected;
}

} // namespace

bool CDecoderSearch::IsUseful(const TDecoderClassInfo& decoder) const {
    return decoder.outputFormatId == wanted_ || !IsMediaFormat(decoder.outputFormatId) ||
           !IsMediaFormat(wanted_);
}

void CDecoderSearch::Collect(IObjectEnumerator& decoders) {
    // The records come through an enumeration, as they come to applications: its objects take numbers, and
    // whoever replaces their classes decides what a search sees. So what arrives is a pointer without a type.
    while (decoders.HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(decoders.GetNext()).Query<IPtrObject>();
        const auto* const decoder = item ? static_cast<const TDecoderClassInfo*>(item->GetPtr()) : nullptr;
        if (!decoder || !IsUseful(*decoder)) continue;
        if (const auto filter = CreateDecoder(decoder->classId)) candidates_.Share(filter.Get());
    }
    taken_.assign(candidates_.GetCount(), false);
}

CRefPtr<IInputStream> CDecoderSearch::Run(IInputStream& stream) {
    return wanted_ == CId::Null() ? FindLongest(stream) : FindWanted(stream);
}

CRefPtr<IInputStream> CDecoderSearch::FindWanted(IInputStream& current) {
    if (current.GetFormat().id == wanted_) return CRefPtr<IInputStream>::Share(&current);
    if (depth_ > kMaxDepth) return {};
    ++depth_;
    CRefPtr<IInputStream> found;
    for (std::size_t i = 0; i < candidates_.GetCount() && !found; ++i) {
        // Kept for callers: a candidate that led nowhere stays connected, and so is not tried again.
        if (TryConnect(i, current)) found = FindWanted(*candidates_[i]);
    }
    --depth_;
    return found;
}

CRefPtr<IInputStream> CDecoderSearch::FindLongest(IInputStream& stream) {
    IInputStream* current = &stream;
    for (std::size_t i = 0; i < candidates_.GetCount();) {
        if (TryConnect(i, *current)) {
            // Those that refused the former stream may take this one.
            current = candidates_[i];
            i = 0;
        } else {
            ++i;
        }
    }
    return CRefPtr<IInputStream>::Share(current);
}

bool CDecoderSearch::TryConnect(std::size_t candidate, IInputStream& current) {
    IInputStreamFilter& filter = *candidates_[candidate];
    // Asking the filter alone is not enough: one that hides its stream would be connected for ever.
    if (IsConnected(filter) || taken_[candidate]) return false;
    try {
        filter.Connect(&current);
    } catch (const CDataFormatException&) {
        return false;
    } catch (const CIOException&) {
        return false;
    }
    taken_[candidate] = true;
    return true;
}

} // namespace vorlund
