// The codec class store: decoder and encoder records in the order of registration.
//
// One lock guards both lists (StoreLock.h tells how it outlives the closing): registration takes it alone,
// everything that looks at a record shares it. It is a leaf: while it is held no object is created, no
// exception raised and no other lock taken. So no operation leaves it locked. Records never move and never
// change, so a pointer to one stays good until `Close`; a search holds on to the records for as long as it
// runs.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/objects/Registrations.h"
#include "vorlund/api/values/DebugOutput.h"
#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/codecs/DecoderSearch.h"
#include "vorlund/data/file/FileInputStream.h"
#include "vorlund/system/StoreLock.h"
#include "vorlund/util/PtrObjects.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/File.h>

#include <deque>
#include <optional>
#include <vector>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/CodecClassStore");
constexpr const wchar* kNotInitialized = VRL_L("Not initialized");
constexpr const wchar* kClassMissing = VRL_L("Class must be registered first");
constexpr const wchar* kNoEnumerator = VRL_L("Cannot create enumerator");
constexpr const wchar* kCannotDecodeFile = VRL_L("Cannot decode file '%s'");

constexpr const wchar* kRegisterDecoder = VRL_L("vorlund::CCodecClassStore::RegisterDecoder");
constexpr const wchar* kRegisterEncoder = VRL_L("vorlund::CCodecClassStore::RegisterEncoder");
constexpr const wchar* kGetDecoder = VRL_L("vorlund::CCodecClassStore::GetDecoderClassInfo");
constexpr const wchar* kGetEncoder = VRL_L("vorlund::CCodecClassStore::GetEncoderClassInfo");
constexpr const wchar* kCreateDecoder = VRL_L("vorlund::CCodecClassStore::CreateDecoder");
constexpr const wchar* kCreateEncoder = VRL_L("vorlund::CCodecClassStore::CreateEncoder");
constexpr const wchar* kEnumerateDecoders = VRL_L("vorlund::CCodecClassStore::EnumerateDecoders");
constexpr const wchar* kEnumerateEncoders = VRL_L("vorlund::CCodecClassStore::EnumerateEncoders");
constexpr const wchar* kDecodeStream = VRL_L("vorlund::CCodecClassStore::DecodeStream");
constexpr const wchar* kDecodeFile = VRL_L("vorlund::CCodecClassStore::DecodeFile");

constexpr const wchar* kStillLocked = VRL_L("[vorlund::CCodecClassStore::Close] Still locked!");

constexpr TFailure kNotClosed{VRL_L("vorlund::CCodecClassStore::~CCodecClassStore"), kFile, 58,
                              VRL_L("Not closed")};

const TDecoderChoice kAnyDecoder;

/// Where the file that has just been opened ends, if the system has told. The files of some file systems have
/// no length and deliver all the same; an application's class of files is not asked.
std::optional<std::uint64_t> EndOf(IFileInputStream& stream) {
    auto* const file = dynamic_cast<CFileInputStream*>(&stream);
    const std::int64_t length = file ? file->GetLength() : 0;
    if (length <= 0) return std::nullopt;
    return static_cast<std::uint64_t>(length);
}

/// What an operation raises on a closed store, and when it misses a class or a record.
struct TFailures {
    TFailure notInitialized;
    TFailure notFound;
};
constexpr TFailures kRegisterDecoderFailures{{kRegisterDecoder, kFile, 91, kNotInitialized},
                                             {kRegisterDecoder, kFile, 97, kClassMissing}};
constexpr TFailures kRegisterEncoderFailures{{kRegisterEncoder, kFile, 106, kNotInitialized},
                                             {kRegisterEncoder, kFile, 112, kClassMissing}};
constexpr TFailures kGetDecoderFailures{{kGetDecoder, kFile, 121, kNotInitialized},
                                        {kGetDecoder, kFile, 131, VRL_L("")}};
constexpr TFailures kGetEncoderFailures{{kGetEncoder, kFile, 136, kNotInitialized},
                                        {kGetEncoder, kFile, 146, VRL_L("")}};
constexpr TFailures kCreateDecoderFailures{{kCreateDecoder, kFile, 151, kNotInitialized},
                                           {kCreateDecoder, kFile, 162, VRL_L("")}};
constexpr TFailures kCreateEncoderFailures{{kCreateEncoder, kFile, 167, kNotInitialized},
                                           {kCreateEncoder, kFile, 178, VRL_L("")}};

constexpr TFailure kNoDecoderEnumerator{kEnumerateDecoders, kFile, 184, kNoEnumerator};
constexpr TFailure kNoEncoderEnumerator{kEnumerateEncoders, kFile, 200, kNoEnumerator};
constexpr TFailure kDecodeStreamNotInitialized{kDecodeStream, kFile, 311, kNotInitialized};
constexpr TFailure kCannotDecodeStream{kDecodeStream, kFile, 352, VRL_L("Cannot decode stream")};
constexpr TFailure kDecodeFileNotInitialized{kDecodeFile, kFile, 360, kNotInitialized};
constexpr TFailure kNoFileStream{kDecodeFile, kFile, 362, VRL_L("Cannot create file input stream")};
constexpr TFailure kCannotDecodeFileFormat{kDecodeFile, kFile, 370, kCannotDecodeFile};
constexpr TFailure kCannotDecodeFileIo{kDecodeFile, kFile, 373, kCannotDecodeFile};

} // namespace

struct CCodecClassStore::TData {
    mutable CStoreLock lock;
    /// Deques, because lookups hand out the addresses of their members.
    std::deque<TDecoderClassInfo> decoders;
    std::deque<TEncoderClassInfo> encoders;

    using CAccess = CStoreAccess<TData>;

    // Kept for callers: no check for duplicates; the first record of a format pair wins.
    template <class TInfo>
    static void Register(TData* const& store, std::deque<TInfo> TData::*records, const TInfo& info,
                         const TFailures& failures) {
        services::RequireClass(info.classId, failures.notFound);
        const CAccess data(store, TStoreUse::Exclusive);
        if (!data) Raise<CBugException>(failures.notInitialized);
        ((*data).*records).push_back(info);
    }

    /// Calls `use` with the first record of a format pair, under the lock, and returns its result.
    template <class TInfo, class TUse>
    static auto Find(TData* const& store, std::deque<TInfo> TData::*records, const CId& input,
                     const CId& output, const TFailures& failures, TUse use) {
        CAccess data(store, TStoreUse::Shared);
        if (!data) Raise<CBugException>(failures.notInitialized);
        for (const TInfo& info : (*data).*records) {
            if (info.inputFormatId == input && info.outputFormatId == output) return use(info);
        }
        data.Leave();
        Raise<CClassNotFoundException>(failures.notFound);
    }

    template <class TInfo>
    static const TInfo* Get(TData* const& store, std::deque<TInfo> TData::*records, const CId& input,
                            const CId& output, const TFailures& failures) {
        return Find(store, records, input, output, failures, [](const TInfo& info) { return &info; });
    }

    template <class TInfo>
    static IObject* Create(TData* const& store, std::deque<TInfo> TData::*records, const CId& input,
                           const CId& output, const TFailures& failures) {
        return services::CreateObject(
            Find(store, records, input, output, failures, [](const TInfo& info) { return info.classId; }));
    }

    /// The addresses of all records; none of a closed store.
    template <class TInfo>
    static std::vector<TInfo*> Snapshot(TData* const& store, std::deque<TInfo> TData::*records) {
        std::vector<TInfo*> snapshot;
        const CAccess data(store, TStoreUse::Shared);
        if (!data) return snapshot;
        for (TInfo& info : (*data).*records) snapshot.push_back(&info);
        return snapshot;
    }

    /// An enumerator over one of the lists; empty when the store is closed.
    template <class TInfo>
    static IObjectEnumerator* Enumerate(TData* const& store, std::deque<TInfo> TData::*records,
                                        const TFailure& failure) {
        auto enumerator = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, failure);
        const std::vector<TInfo*> snapshot = Snapshot(store, records);
        TakePtrObjects(snapshot, failure, [&](IPtrObject* item) { enumerator->Push(item); });
        return enumerator.Detach();
    }

    /// What `DecodeStream` returns, and nothing where it raises "Cannot decode stream".
    static CRefPtr<IInputStream> FindChain(const CCodecClassStore& store, IInputStream* stream,
                                           const CId& wanted, const TDecoderChoice& choice,
                                           std::optional<std::uint64_t> streamEnd = std::nullopt) {
        // Another thread may close the store in the middle: the records stay until the search is over.
        const CAccess records(store.data_, TStoreUse::Pinned);
        if (!records) Raise<CBugException>(kDecodeStreamNotInitialized);
        if (!stream) return {};
        if (wanted != CId::Null() && stream->GetFormat().id == wanted)
            return CRefPtr<IInputStream>::Share(stream);
        CDecoderSearch search(wanted, choice);
        if (streamEnd) search.SetEnd(*streamEnd);
        search.Collect(*CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateDecoders()));
        CRefPtr<IInputStream> end = search.Run(*stream);
        search.ReleaseCandidates();
        return end;
    }

    /// Null for a file that no chain decodes, and for one that cannot be read.
    static IInputStream* DecodeFile(const CCodecClassStore& store, const wchar* path, const CId& wanted,
                                    const TDecoderChoice& choice, bool& isUnreadable) {
        store.GetData(kDecodeFileNotInitialized);
        const auto file = CreateOrRaise<IFileInputStream>(classid::CFileInputStream, kNoFileStream);
        file->Open(path);
        try {
            CRefPtr<IInputStream> end = FindChain(store, file.Get(), wanted, choice, EndOf(*file));
            if (end) return end.Detach();
            // Built for its report, which comes before that of the exception that names the file.
            [[maybe_unused]] const CDataFormatException undecodable(
                kCannotDecodeStream.method, kCannotDecodeStream.file, kCannotDecodeStream.line,
                kCannotDecodeStream.reason);
        } catch (const CDataFormatException&) {
            // Has been reported as well.
        } catch (const CIOException&) {
            isUnreadable = true;
        }
        return nullptr;
    }
};

CCodecClassStore::~CCodecClassStore() noexcept(false) {
    if (!data_) return;
    Close();
    Raise<CBugException>(kNotClosed);
}

void CCodecClassStore::Init() {
    OpenStore(data_);
}

void CCodecClassStore::Close() {
    if (CloseStore(data_)) EmitDebugText(DEBUG_MESSAGE_OUTPUT, kStillLocked);
}

/// Raises while the store is closed. Another thread may close it right afterwards, so no caller uses the
/// result.
CCodecClassStore::TData& CCodecClassStore::GetData(const TFailure& notInitialized) const {
    const TData::CAccess data(data_, TStoreUse::Pinned);
    if (!data) Raise<CBugException>(notInitialized);
    return *data; // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

void CCodecClassStore::RegisterDecoder(const TDecoderClassInfo& info) {
    GetData(kRegisterDecoderFailures.notInitialized);
    TData::Register(data_, &TData::decoders, info, kRegisterDecoderFailures);
    registrations::Note(registrations::TKind::Decoder, info.classId);
}

void CCodecClassStore::RegisterEncoder(const TEncoderClassInfo& info) {
    GetData(kRegisterEncoderFailures.notInitialized);
    TData::Register(data_, &TData::encoders, info, kRegisterEncoderFailures);
    registrations::Note(registrations::TKind::Encoder, info.classId);
}

const TDecoderClassInfo* CCodecClassStore::GetDecoderClassInfo(const CId& input, const CId& output) const {
    return TData::Get(data_, &TData::decoders, input, output, kGetDecoderFailures);
}

const TEncoderClassInfo* CCodecClassStore::GetEncoderClassInfo(const CId& input, const CId& output) const {
    return TData::Get(data_, &TData::encoders, input, output, kGetEncoderFailures);
}

IObject* CCodecClassStore::CreateDecoder(const CId& input, const CId& output) const {
    return TData::Create(data_, &TData::decoders, input, output, kCreateDecoderFailures);
}

IObject* CCodecClassStore::CreateEncoder(const CId& input, const CId& output) const {
    return TData::Create(data_, &TData::encoders, input, output, kCreateEncoderFailures);
}

IObjectEnumerator* CCodecClassStore::EnumerateDecoders() const {
    return TData::Enumerate(data_, &TData::decoders, kNoDecoderEnumerator);
}

IObjectEnumerator* CCodecClassStore::EnumerateEncoders() const {
    return TData::Enumerate(data_, &TData::encoders, kNoEncoderEnumerator);
}

IInputStream* CCodecClassStore::DecodeStream(IInputStream* stream, const CId& wanted) const {
    return DecodeStream(stream, wanted, kAnyDecoder);
}

IInputStream* CCodecClassStore::DecodeStream(IInputStream* stream, const CId& wanted,
                                             const TDecoderChoice& choice) const {
    CRefPtr<IInputStream> end = TData::FindChain(*this, stream, wanted, choice);
    if (stream && !end) Raise<CDataFormatException>(kCannotDecodeStream);
    return end.Detach();
}

IInputStream* CCodecClassStore::DecodeFile(const wchar* path, const CId& wanted) const {
    return DecodeFile(path, wanted, kAnyDecoder);
}

IInputStream* CCodecClassStore::DecodeFile(const wchar* path, const CId& wanted,
                                           const TDecoderChoice& choice) const {
    // Nothing here needs an end of its own: an exception stops at each block that does, on its way to the
    // caller.
    bool isUnreadable = false;
    if (IInputStream* const end = TData::DecodeFile(*this, path, wanted, choice, isUnreadable)) return end;
    const wchar* const reason = PathReason(kCannotDecodeFile, path);
    if (isUnreadable) Raise<CIOException>(kCannotDecodeFileIo, reason);
    Raise<CDataFormatException>(kCannotDecodeFileFormat, reason);
}

// Encoding through the store is not provided.
IOutputStream* CCodecClassStore::EncodeStream(IOutputStream*, const TDataFormat*, const TDataFormat*) const {
    return nullptr;
}

IOutputStream* CCodecClassStore::EncodeFile(const wchar*, const TDataFormat*, const TDataFormat*) const {
    return nullptr;
}

} // namespace vorlund
