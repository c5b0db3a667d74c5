/// \file
/// The registry of decoders and encoders, and the search for a chain of decoders.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

class IInputStream;
class IObject;
class IObjectEnumerator;
class IOutputStream;
struct TDataFormat;
struct TDecoderChoice;

/// A decoder class: reads `inputFormatId` (null: any input) and produces `outputFormatId`.
struct TDecoderClassInfo {
    CId classId;
    CId inputFormatId;
    CId outputFormatId;
};

/// An encoder class, in the same form.
struct TEncoderClassInfo {
    CId classId;
    CId inputFormatId;
    CId outputFormatId;
};

/// Final media data other than audio PCM, RGB images and RGB video: the search for decoders ends at these
/// four formats. No record of the library uses it.
inline constexpr CId OTHER_MEDIA_FORMAT_ID{0x21089FFF, 0x06984E6C, 0x975010E2, 0x0E01371C};

/// The registry of decoders and encoders. Registrations keep their order; the first record of a format pair
/// wins.
///
/// Registrations, lookups and decoding may come from any thread. `Init` and `Close` belong to the start and
/// the end of the library; a thread that is inside another operation then comes to no harm. All operations
/// but `Init`, `Close`, the enumerations and the encoding ones raise `CBugException` "Not initialized" while
/// the store is closed.
///
/// \code{.cpp}
/// // A chain of decoders for a file; that of a WAV file is one decoder.
/// const auto sound = CRefPtr<IInputStream>::Adopt(
///     v.GetCodecClassStore().DecodeFile(VRL_L("strings.wav"), TDataFormat_AudioPcm::FormatId));
/// std::printf("%d bytes of sound\n", static_cast<int>(sound->GetLength())); // prints 405720 bytes of sound
/// \endcode
class VRL_API CCodecClassStore {
public:
    /// Closed.
    CCodecClassStore() = default;
    CCodecClassStore(const CCodecClassStore&) = delete;
    CCodecClassStore& operator=(const CCodecClassStore&) = delete;

    /// Raises `CBugException` "Not closed" while open.
    ~CCodecClassStore() noexcept(false);

    /// Opens the store; nothing happens when it is open.
    void Init();

    /// Forgets every record and closes the store; nothing happens when it is closed. Threads that wait for
    /// the store's lock find it closed. Waits for another thread that holds the lock, 2 seconds at most, and
    /// not for one that has ended while it registered a record; when one still holds it then, prints
    /// "[vorlund::CCodecClassStore::Close] Still locked!" to `DEBUG_MESSAGE_OUTPUT`. A search that is under
    /// way goes on with the records that it has found; the memory is freed when the last thread has left the
    /// store. Never raises.
    void Close();

    /// Registers a copy of the record behind the others. Raises `CBugException` "Class must be registered
    /// first" when the class store does not know the class.
    void RegisterDecoder(const TDecoderClassInfo& info);
    void RegisterEncoder(const TEncoderClassInfo& info);

    /// The store's own copy of the first record with exactly this format pair, valid until `Close`. Raises
    /// `CClassNotFoundException` with an empty reason.
    const TDecoderClassInfo* GetDecoderClassInfo(const CId& input, const CId& output) const;
    const TEncoderClassInfo* GetEncoderClassInfo(const CId& input, const CId& output) const;

    /// A new object of that record's class, owned by the caller; raises the same and what the class store
    /// raises.
    IObject* CreateDecoder(const CId& input, const CId& output) const;
    IObject* CreateEncoder(const CId& input, const CId& output) const;

    /// A new enumerator, owned by the caller, with one `IPtrObject` per record, in order, that points at the
    /// store's copy (valid until `Close`). Empty while the store is closed. Raises what creating an object
    /// raises, and `CBugException` "Cannot create enumerator" when the classes of enumerators or pointer
    /// objects were replaced by others of another kind.
    IObjectEnumerator* EnumerateDecoders() const;
    IObjectEnumerator* EnumerateEncoders() const;

    /// Finds a chain of at most nine decoders that turns `stream` into the format `wanted`, depth first in
    /// the order of registration, and returns its end with one reference for the caller; a stream that has
    /// the format already is returned itself. With a null `wanted`, the end of the longest chain that the
    /// decoders accept. A null `stream` gives null.
    ///
    /// The stream is not rewound between candidates, so decoders seek before they read. Decoders that raise
    /// `CDataFormatException` or `CIOException` are passed over; other exceptions pass on. Raises
    /// `CDataFormatException` "Cannot decode stream".
    IInputStream* DecodeStream(IInputStream* stream, const CId& wanted) const;

    /// The same for a file. Raises what opening the file raises, and `CDataFormatException` or `CIOException`
    /// "Cannot decode file '...'".
    IInputStream* DecodeFile(const wchar* path, const CId& wanted) const;

    /// The same two with a choice of decoders and a report (DecodeReport.h). A stream that has the wanted
    /// format already leaves the report as it is. Since version 0.1.
    IInputStream* DecodeStream(IInputStream* stream, const CId& wanted, const TDecoderChoice& choice) const;
    IInputStream* DecodeFile(const wchar* path, const CId& wanted, const TDecoderChoice& choice) const;

    /// Null, whatever the arguments: encoding through the store is not provided.
    IOutputStream* EncodeStream(IOutputStream* stream, const TDataFormat* from, const TDataFormat* to) const;
    IOutputStream* EncodeFile(const wchar* path, const TDataFormat* from, const TDataFormat* to) const;

private:
    struct TData;
    TData& GetData(const struct TFailure& notInitialized) const;

    TData* data_ = nullptr;
};

} // namespace vorlund
