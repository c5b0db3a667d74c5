/// \file
/// What became of a search for decoders: one entry for each step, in the order of the steps, and what users
/// want to know of it. `CCodecClassStore::DecodeStream` and its relatives fill a report that is given to
/// them.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/Id.h>
#include <vorlund/String.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace vorlund {

class IInputStream;

/// What came of a candidate. Since version 0.1.
enum TDecodeOutcome {
    /// It accepted its input.
    DECODE_CONNECTED,
    /// It refused its input: `CDataFormatException`.
    DECODE_REFUSED,
    /// Its input could not be read: `CIOException`.
    DECODE_UNREADABLE,
    /// It raised something else, and the search ended with that.
    DECODE_RAISED,
    /// No object of its class can be made, or its objects are no input filters.
    DECODE_NOT_CREATED,
    /// The caller forbade its class.
    DECODE_FORBIDDEN,
    /// The process in which it was tried died, or gave no answer (IsolatedDecoder.h).
    DECODE_DIED,
};

/// One step of a search. Since version 0.1.
struct TDecodeEntry {
    CId classId;
    /// The registered name; the text form of the identifier where there is none.
    CString className;
    /// The number of decoders below it in the chain; 0 directly over the source.
    int depth = 0;
    TDecodeOutcome outcome = DECODE_NOT_CREATED;
    /// What it raised, unless it was connected: of a `CException` the type, method and reason, of another
    /// standard exception `what()` as the reason.
    TExceptionType exceptionType = EXCEPTION_TYPE_GENERIC;
    CString method;
    CString reason;
    /// The container that it has recognised, empty for none; the values that it objected to, "format tag 3";
    /// and what else it has noted (DecodeNotes.h).
    CString container;
    CString values;
    CString remarks;
    /// What files and resources of the library delivered to it.
    std::uint64_t bytesRead = 0;
    /// How long it took.
    double seconds = 0;
};

/// The report of one search. A plain value that belongs to one thread at a time. Since version 0.1.
class VRL_API CDecodeReport {
public:
    CDecodeReport();
    CDecodeReport(const CDecodeReport&);
    CDecodeReport& operator=(const CDecodeReport&);
    ~CDecodeReport();

    /// The entries, in the order of the steps; valid until the report is changed.
    const std::vector<TDecodeEntry>& GetEntries() const { return entries_; }

    /// The entry that tells best what is wrong with the input: of those whose decoder has recognised its
    /// container or was connected, the one that is highest in its chain, then the one that has read most,
    /// then the first; before them all one that died. Null when no decoder recognised anything.
    const TDecodeEntry* GetFurthest() const;

    /// The container of the source by its first bytes, when no chain was found: "FLAC", "MP3". Empty when it
    /// is not known, or the source cannot be read again.
    const CString& GetContainer() const { return container_; }

    /// The plug-in that reads this container, when none of its decoders has been tried; else empty.
    const CString& GetPlugin() const { return plugin_; }

    /// Why there is no chain, in one sentence without a full stop, with the value that was objected to and
    /// the plug-in to install. Empty when a chain was found.
    CString Explain() const;

    /// The whole report, a line for each entry, separated by "\n".
    CString ToString() const;

    /// Empties the report.
    void Clear();

private:
    friend class CDecodeRecorder;

    std::vector<TDecodeEntry> entries_;
    CString container_;
    CString plugin_;
    bool isFound_ = false;
    bool isEmpty_ = false;
};

/// What a search is told beside its input. The classes are compared with those of the records of the store.
/// Since version 0.1.
struct TDecoderChoice {
    /// Is emptied, then filled; null for none.
    CDecodeReport* report = nullptr;
    /// Classes that are left out.
    std::span<const CId> forbidden = {};
    /// Classes that are tried before all others, in this order.
    std::span<const CId> preferred = {};
    /// Is told the class of each candidate before it is tried. What it raises ends the search.
    std::function<void(const CId& classId)> onCandidate = {};
};

/// A kind of file that the reports know by its first bytes. Since version 0.1.
struct TKnownContainer {
    /// As the reports name it: "FLAC".
    CString name;
    /// The plug-in that reads it, and the registered name of its decoder; empty where none is known.
    CString plugin;
    CString decoder;
};

/// The kinds of files that the reports know, each once. Any thread, at any time. Raises `std::bad_alloc`.
/// Since version 0.1.
VRL_API std::vector<TKnownContainer> ListKnownContainers();

/// One stream of a chain. Since version 0.1.
struct TChainLink {
    CId classId;
    /// The registered name; the text form of the identifier where there is none.
    CString className;
    /// The format of what it delivers, null for raw bytes.
    CId formatId;
};

/// The chain that ends with `end`, from there to its source: the streams along `IInputStreamFilter`, 1,000 at
/// most. Raises what the streams raise, and `CBugException` "Not initialized" while the library is closed.
/// Since version 0.1.
VRL_API std::vector<TChainLink> ListChain(IInputStream& end);

} // namespace vorlund
