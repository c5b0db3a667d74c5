// The search for a chain of decoders.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include <cstddef>
#include <vector>

namespace vorlund {

class IObjectEnumerator;
struct TDecoderClassInfo;

/// One search: collects candidates, which are its own, and connects them to one another. The chain that it
/// finds lives on through the references from each filter to the stream below it.
class CDecoderSearch {
public:
    /// A null `wanted` asks for the longest chain.
    explicit CDecoderSearch(const CId& wanted) : wanted_(wanted) {}

    /// Creates a decoder for every record of `decoders` that can lead to the wanted format; `decoders` yields
    /// `IPtrObject`s that point at `TDecoderClassInfo`s. A class that is not registered, or whose objects are
    /// no input filters, is left out; every other exception of a creation passes on.
    void Collect(IObjectEnumerator& decoders);

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

    CId wanted_;
    CReferenceList<IInputStreamFilter> candidates_;
    /// Which candidates this search has connected.
    std::vector<bool> taken_;
    int depth_ = 0;
};

} // namespace vorlund
