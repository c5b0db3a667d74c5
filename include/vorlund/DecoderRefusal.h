/// \file
/// How a decoder refuses its input without the price of an exception. A search for decoders tries one
/// candidate after the other and asks each only whether it takes the stream; a throw and its way through the
/// candidate take longer than all the rest of a refusal. For the library's own decoders and for those of
/// plug-ins, which may as well go on raising.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/StreamFilter.h>

#include <type_traits>

namespace vorlund {

/// Not for applications and plug-ins: the out-of-line part of the class below, exported because that calls
/// it.
namespace refusals {

/// A call whose caller takes a refusal instead of an exception.
class CQuietCall;

/// The call of `filter` that has just begun, if its caller waits for a refusal; else null. Once for each
/// call.
VRL_API CQuietCall* Take(const IInputStreamFilter& filter) noexcept;
/// Hands the refusal to the caller.
VRL_API void Give(CQuietCall& call, const CException& refusal) noexcept;

} // namespace refusals

/// A `Connect` that may refuse its stream:
///
///     void CMyDecoder::Connect(IInputStream* stream) {
///         const CRefusal refusal(*this);
///         auto next = BeginConnect(stream);
///         if (!next) return;
///         if (!IsMine(*next)) return refusal.Raise<CDataFormatException>(kOtherFile);
///         ...
///     }
///
/// Called by the search of the codec class store, `Raise` builds the exception, which reports it as ever, and
/// hands it to the search: it returns, and `Connect` must return at once and leave nothing connected. Called
/// by anybody else, also from inside that `Connect`, it throws. Whatever else is raised in `Connect` goes its
/// usual way.
///
/// Costs one access to thread-local data. It belongs to the thread and to the one call of `Connect` in which
/// it was made, and does not use the filter after its construction, which a stream may destroy meanwhile.
///
/// \warning A class whose `Connect` does this is not a base of one that calls this `Connect` and relies on
/// the exception: such a class asks afterwards what is connected.
///
/// Since version 0.1.
class CRefusal {
public:
    /// First in `Connect`. `filter` is the object itself.
    explicit CRefusal(const IInputStreamFilter& filter) noexcept : call_(refusals::Take(filter)) {}
    CRefusal(const CRefusal&) = delete;
    CRefusal& operator=(const CRefusal&) = delete;

    /// Refuses with that failure, whose texts are not copied. `TException` is `CDataFormatException` or
    /// `CIOException`: what a search goes on after. Raises it, or returns when the caller is a search.
    template <class TException> void Raise(const TFailure& failure) const {
        static_assert(std::is_same_v<TException, CDataFormatException> ||
                          std::is_same_v<TException, CIOException>,
                      "a search ends with every other exception");
        const TException refusal(failure.method, failure.file, failure.line, failure.reason);
        if (!call_) throw refusal;
        refusals::Give(*call_, refusal);
    }

    /// True when `Raise` returns.
    bool IsAwaited() const { return call_ != nullptr; }

private:
    friend class refusals::CQuietCall;

    refusals::CQuietCall* const call_;
};

} // namespace vorlund
