// The streams of a chain, one after the other, for those who follow it from its end.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include <cstddef>
#include <utility>

namespace vorlund {

/// More streams than this follow each other only in a ring, which has no end.
inline constexpr std::size_t kMaxChain = 1000;

/// The stream that `stream` reads; empty when it reads none.
inline CRefPtr<IInputStream> NextInChain(const CRefPtr<IInputStream>& stream) {
    const auto filter = stream.Query<IInputStreamFilter>();
    return CRefPtr<IInputStream>::Adopt(filter ? filter->GetInputStream() : nullptr);
}

/// The stream that `stream` writes; empty when it writes none.
inline CRefPtr<IOutputStream> NextInChain(const CRefPtr<IOutputStream>& stream) {
    const auto filter = stream.Query<IOutputStreamFilter>();
    return CRefPtr<IOutputStream>::Adopt(filter ? filter->GetOutputStream() : nullptr);
}

/// The stream at the end of the chain that begins with `stream`.
template <class TStream> CRefPtr<TStream> EndOfChain(TStream& stream) {
    auto end = CRefPtr<TStream>::Share(&stream);
    for (std::size_t i = 0; i < kMaxChain; ++i) {
        auto next = NextInChain(end);
        if (!next) break;
        end = std::move(next);
    }
    return end;
}

} // namespace vorlund
