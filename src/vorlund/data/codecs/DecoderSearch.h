// The search for a chain of decoders.
#pragma once

#include "vorlund/data/codecs/DecodeRecorder.h"

#include <vorlund/Id.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vorlund {

class IObjectEnumerator;
struct TDecoderClassInfo;

/// One search: collects candidates, which are its own, and connects them to one another. The chain that it
/// finds lives on through the references from each filter to the stream below it.
class CDecoderSearch {
public:
    /// A null `wanted` asks for the longest chain.
    CDecoderSearch(const CId& wanted, const TDecoderChoice& choice)
        : wanted_(wanted), choice_(choice), recorder_(choice.report) {}

    /// Creates a decoder for every record of `decoders` that can lead to the wanted format; `decoders` yields
    /// `IPtrObject`s that point at `TDecoderClassInfo`s. A class that is not registered, or whose objects are
    /// no input filters, is left out; every other exception of a creation passes on. Forbidden classes are
    /// left out, preferred ones come first.
    void Collect(IObjectEnumerator& decoders);

    /// `stream` is a file that has just been opened: the candidate that is tried first need not look for its
    /// end.
    void SetEnd(std::uint64_t end) { end_ = end; }

    /// The end of the chain that begins with `stream`, or nothing. Raises what a decoder raises, except for
    /// `CDataFormatException` and `CIOException` from `Connect`.
    CRefPtr<IInputStream> Run(IInputStream& stream);

    /// Releases the candidates. Raises what the destruction of one raises, when all are released.
    void ReleaseCandidates() { candidates_.Clear(); }

private:
    bool IsUseful(const TDecoderClassInfo& decoder) const;
    CRefPtr<IInputStream> FindWanted(IInputStream& current);
    CRefPtr<IInputStream> FindLongest(IInputStream& stream);
    /// Connects the candidate to `current` if it is free; false when it is not or when it refuses the data.
    bool TryConnect(std::size_t candidate, IInputStream& current);
    /// Adds a candidate of that class.
    void Add(const CId& classId);
    void PutPreferredFirst();

    CId wanted_;
    const TDecoderChoice& choice_;
    CDecodeRecorder recorder_;
    CReferenceList<IInputStreamFilter> candidates_;
    /// The classes of the candidates.
    std::vector<CId> classIds_;
    /// The order in which they are tried.
    std::vector<std::size_t> order_;
    /// Of the source, until somebody else had time to change it.
    std::optional<std::uint64_t> end_;
    /// Which candidates this search has connected.
    std::vector<bool> taken_;
    /// One more than the number of decoders below the one that is tried.
    int depth_ = 0;
};

} // namespace vorlund
