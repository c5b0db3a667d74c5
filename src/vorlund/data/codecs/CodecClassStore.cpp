// The codec class store: decoder and encoder records in the order of registration.
//
// One lock guards both lists: registration takes it for writing, everything that looks at a record for
// reading. It is a leaf: while it is held no object is created, no exception raised and no other lock taken.
// So nothing can leave it locked, and `Close` gets it as soon as other threads are done. Records never
// move and never change, so a pointer to one stays good until `Close`.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/codecs/DecoderSearch.h"
#include "vorlund/util/PtrObjects.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/ReadWriteLock.h>

#include <algorithm>
#include <deque>
#include <utility>
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

constexpr TFailure kNotClosed{VRL_L("vorlund::CCodecClassStore::~CCodecClassStore"), kFile, 58,
                              VRL_L("Not closed")};

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
    /// Deques, because lookups hand out the addresses of their members.
    std::deque<TDecoderClassInfo> decoders;
    std::deque<TEncoderClassInfo> encoders;
    CReadWriteLock lock;

    // Kept for callers: no check for duplicates; the first record of a format pair wins.
    template <class TInfo> void Register(std::deque<TInfo>& records, const TInfo& info) {
        const CReadWriteLockGuard guard(lock, LOCK_MODE_WRITE);
        records.push_back(info);
    }

    /// The first record of a format pair. Raises `failure` when there is none.
    template <class TInfo>
    const TInfo& Find(const std::deque<TInfo>& records, const CId& input, const CId& output,
                      const TFailure& failure) {
        const auto find = [&]() -> const TInfo* {
            const CReadWriteLockGuard guard(lock, LOCK_MODE_READ);
            const auto found = std::find_if(records.begin(), records.end(), [&](const TInfo& info) {
                return info.inputFormatId == input && info.outputFormatId == output;
            });
            return found == records.end() ? nullptr : &*found;
        };
        const TInfo* const info = find();
        if (!info) Raise<CClassNotFoundException>(failure);
        return *info;
    }

    /// The addresses of all records.
    template <class TInfo> std::vector<TInfo*> Snapshot(std::deque<TInfo>& records) {
        std::vector<TInfo*> snapshot;
        const CReadWriteLockGuard guard(lock, LOCK_MODE_READ);
        for (TInfo& info : records) snapshot.push_back(&info);
        return snapshot;
    }

    /// An enumerator over one of the lists; empty when there are no data.
    template <class TInfo>
    static IObjectEnumerator* Enumerate(TData* data, std::deque<TInfo> TData::*records,
                                        const TFailure& failure) {
        auto enumerator = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, failure);
        if (data) {
            const std::vector<TInfo*> snapshot = data->Snapshot(data->*records);
            TakePtrObjects(snapshot, failure, [&](IPtrObject* item) { enumerator->Push(item); });
        }
        return enumerator.Detach();
    }
};

CCodecClassStore::~CCodecClassStore() noexcept(false) {
    if (!data_) return;
    Close();
    Raise<CBugException>(kNotClosed);
}

void CCodecClassStore::Init() {
    if (!data_) data_ = new TData;
}

void CCodecClassStore::Close() {
    if (!data_) return;
    TData* const data = std::exchange(data_, nullptr);
    // Waits for other threads that are inside.
    data->lock.Lock(LOCK_MODE_WRITE, 0);
    data->lock.Unlock();
    delete data;
}

CCodecClassStore::TData& CCodecClassStore::GetData(const TFailure& notInitialized) const {
    if (!data_) Raise<CBugException>(notInitialized);
    return *data_;
}

void CCodecClassStore::RegisterDecoder(const TDecoderClassInfo& info) {
    TData& data = GetData(kRegisterDecoderFailures.notInitialized);
    services::RequireClass(info.classId, kRegisterDecoderFailures.notFound);
    data.Register(data.decoders, info);
}

void CCodecClassStore::RegisterEncoder(const TEncoderClassInfo& info) {
    TData& data = GetData(kRegisterEncoderFailures.notInitialized);
    services::RequireClass(info.classId, kRegisterEncoderFailures.notFound);
    data.Register(data.encoders, info);
}

const TDecoderClassInfo* CCodecClassStore::GetDecoderClassInfo(const CId& input, const CId& output) const {
    TData& data = GetData(kGetDecoderFailures.notInitialized);
    return &data.Find(data.decoders, input, output, kGetDecoderFailures.notFound);
}

const TEncoderClassInfo* CCodecClassStore::GetEncoderClassInfo(const CId& input, const CId& output) const {
    TData& data = GetData(kGetEncoderFailures.notInitialized);
    return &data.Find(data.encoders, input, output, kGetEncoderFailures.notFound);
}

IObject* CCodecClassStore::CreateDecoder(const CId& input, const CId& output) const {
    TData& data = GetData(kCreateDecoderFailures.notInitialized);
    const CId classId = data.Find(data.decoders, input, output, kCreateDecoderFailures.notFound).classId;
    return services::CreateObject(classId);
}

IObject* CCodecClassStore::CreateEncoder(const CId& input, const CId& output) const {
    TData& data = GetData(kCreateEncoderFailures.notInitialized);
    const CId classId = data.Find(data.encoders, input, output, kCreateEncoderFailures.notFound).classId;
    return services::CreateObject(classId);
}

IObjectEnumerator* CCodecClassStore::EnumerateDecoders() const {
    return TData::Enumerate(data_, &TData::decoders, kNoDecoderEnumerator);
}

IObjectEnumerator* CCodecClassStore::EnumerateEncoders() const {
    return TData::Enumerate(data_, &TData::encoders, kNoEncoderEnumerator);
}

IInputStream* CCodecClassStore::DecodeStream(IInputStream* stream, const CId& wanted) const {
    GetData(kDecodeStreamNotInitialized);
    if (!stream) return nullptr;
    if (wanted != CId::Null() && stream->GetFormat().id == wanted) {
        return CRefPtr<IInputStream>::Share(stream).Detach();
    }
    CDecoderSearch search(wanted);
    search.Collect(*CRefPtr<IObjectEnumerator>::Adopt(EnumerateDecoders()));
    CRefPtr<IInputStream> end = search.Run(*stream);
    search.ReleaseCandidates();
    if (!end) Raise<CDataFormatException>(kCannotDecodeStream);
    return end.Detach();
}

IInputStream* CCodecClassStore::DecodeFile(const wchar* path, const CId& wanted) const {
    GetData(kDecodeFileNotInitialized);
    const auto file = CreateOrRaise<IFileInputStream>(classid::CFileInputStream, kNoFileStream);
    file->Open(path);
    try {
        return DecodeStream(file.Get(), wanted);
    } catch (const CDataFormatException&) {
        Raise<CDataFormatException>(kCannotDecodeFileFormat, PathReason(kCannotDecodeFile, path));
    } catch (const CIOException&) {
        Raise<CIOException>(kCannotDecodeFileIo, PathReason(kCannotDecodeFile, path));
    }
}

// Encoding through the store is not provided.
IOutputStream* CCodecClassStore::EncodeStream(IOutputStream*, const TDataFormat*, const TDataFormat*) const {
    return nullptr;
}

IOutputStream* CCodecClassStore::EncodeFile(const wchar*, const TDataFormat*, const TDataFormat*) const {
    return nullptr;
}

} // namespace vorlund
