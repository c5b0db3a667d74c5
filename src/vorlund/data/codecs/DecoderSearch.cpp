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

#include "vorlund/data/base/QuietCall.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

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
        // A factory may have raised it, and left the store locked.
        services::GiveBackClassStoreLock();
        return {};
    }
}

bool Contains(std::span<const CId> ids, const CId& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
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
        Add(decoder->classId);
    }
    taken_.assign(candidates_.GetCount(), false);
    PutPreferredFirst();
}

void CDecoderSearch::Add(const CId& classId) {
    if (Contains(choice_.forbidden, classId)) {
        recorder_.AddUntried(classId, DECODE_FORBIDDEN);
    } else if (const auto filter = CreateDecoder(classId)) {
        classIds_.push_back(classId);
        candidates_.Share(filter.Get());
    } else {
        recorder_.AddUntried(classId, DECODE_NOT_CREATED);
    }
}

void CDecoderSearch::PutPreferredFirst() {
    order_.resize(candidates_.GetCount());
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    if (choice_.preferred.empty()) return;
    const auto rank = [this](std::size_t candidate) {
        const auto& preferred = choice_.preferred;
        return std::find(preferred.begin(), preferred.end(), classIds_[candidate]) - preferred.begin();
    };
    std::stable_sort(order_.begin(), order_.end(),
                     [&](std::size_t left, std::size_t right) { return rank(left) < rank(right); });
}

CRefPtr<IInputStream> CDecoderSearch::Run(IInputStream& stream) {
    auto end = wanted_ == CId::Null() ? FindLongest(stream) : FindWanted(stream);
    if (end)
        recorder_.SetFound();
    else
        recorder_.SetNotFound(stream);
    return end;
}

CRefPtr<IInputStream> CDecoderSearch::FindWanted(IInputStream& current) {
    if (current.GetFormat().id == wanted_) return CRefPtr<IInputStream>::Share(&current);
    if (depth_ > kMaxDepth) return {};
    ++depth_;
    CRefPtr<IInputStream> found;
    for (std::size_t i = 0; i < order_.size() && !found; ++i) {
        // Kept for callers: a candidate that led nowhere stays connected, and so is not tried again.
        if (TryConnect(order_[i], current)) found = FindWanted(*candidates_[order_[i]]);
    }
    --depth_;
    return found;
}

CRefPtr<IInputStream> CDecoderSearch::FindLongest(IInputStream& stream) {
    IInputStream* current = &stream;
    depth_ = 1;
    for (std::size_t i = 0; i < order_.size();) {
        if (TryConnect(order_[i], *current)) {
            ++depth_;
            // Those that refused the former stream may take this one.
            current = candidates_[order_[i]];
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
    if (choice_.onCandidate) {
        end_.reset();
        choice_.onCandidate(classIds_[candidate]);
    }
    CDecodeStep step(recorder_, classIds_[candidate], depth_ - 1);
    try {
        refusals::CQuietCall call(filter);
        call.SetEnd(std::exchange(end_, std::nullopt));
        filter.Connect(&current);
        if (const CException* const refusal = call.GetRefusal()) {
            const bool isUnreadable = refusal->GetType() == EXCEPTION_TYPE_IO;
            step.End(isUnreadable ? DECODE_UNREADABLE : DECODE_REFUSED, *refusal);
            return false;
        }
    } catch (const CDataFormatException& refusal) {
        step.End(DECODE_REFUSED, refusal);
        return false;
    } catch (const CIOException& failure) {
        step.End(DECODE_UNREADABLE, failure);
        return false;
    } catch (...) {
        step.EndRaised();
        throw;
    }
    step.End(DECODE_CONNECTED);
    taken_[candidate] = true;
    return true;
}

} // namespace vorlund
