// Resources, and typed values in streams.

#include "vorlund_c/resource.h"

#include "Calls.h"
#include "SinkObject.h"
#include "StreamObject.h"
#include "Texts.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <algorithm>
#include <cstring>

namespace vorlund::capi {

namespace {

class CResourceObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Resource;

    CResourceObject() : CHandleObject(Kind), resource_(CreateAs<IResource>(classid::CResource)) {
        if (!resource_) throw CFailure(VORLUND_ERROR_CLASS_NOT_FOUND, "The class is none of a resource");
        chain_ = std::make_shared<CChain>();
    }

    IResource& Get() const { return *resource_; }

private:
    CSafeRefPtr<IResource> resource_;
};

/// A lock of a resource for a block.
class CLockedBytes {
public:
    CLockedBytes(IResource& resource, TLockMode mode)
        : resource_(resource), bytes_(static_cast<std::byte*>(resource.Lock(mode))) {}
    CLockedBytes(const CLockedBytes&) = delete;
    CLockedBytes& operator=(const CLockedBytes&) = delete;
    ~CLockedBytes() { resource_.Unlock(); }

    std::byte* Get() const { return bytes_; }

private:
    IResource& resource_;
    std::byte* bytes_;
};

std::int32_t GetBytes(const char* function, vorlund_resource resource, const std::uint64_t* position,
                      void* buffer, std::uint32_t room, std::uint32_t* count) noexcept {
    return On<CResourceObject>(function, resource, [&](CResourceObject& object) {
        RequirePointer(position);
        RequirePointer(count);
        RequireBuffer(buffer, room);
        const CLockedBytes bytes(object.Get(), LOCK_MODE_READ);
        const std::uint64_t size = bytes.Get() ? object.Get().GetSize() : 0;
        const std::uint64_t left = size - std::min(size, *position);
        *count = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, room));
        if (*count > 0) std::memcpy(buffer, bytes.Get() + *position, *count);
    });
}

template <class TValue>
std::int32_t Write(const char* function, vorlund_sink sink, const TValue& value) noexcept {
    return On<CSinkObject>(function, sink, [&](CSinkObject& object) { CVarWriter(&object.Get()) << value; });
}

template <class TUnit>
std::int32_t WriteText(const char* function, vorlund_sink sink, const TUnit* text) noexcept {
    return On<CSinkObject>(function, sink, [&](CSinkObject& object) {
        const wstring wide = TakeText(text);
        CVarWriter(&object.Get()) << wide.c_str();
    });
}

/// Reads a value, all of whose bytes must be there.
template <class TValue> TValue ReadValue(CStreamObject& stream) {
    TValue value;
    std::uint32_t count = 0;
    stream.Read(&value, sizeof(value), &count);
    if (count < sizeof(value)) throw CFailure(VORLUND_ERROR_IO, "The data have ended");
    return value;
}

template <class TValue>
std::int32_t Read(const char* function, vorlund_stream stream, TValue* value) noexcept {
    return Ask<CStreamObject>(function, stream, value,
                              [](CStreamObject& object) { return ReadValue<TValue>(object); });
}

template <class TUnit>
std::int32_t ReadText(const char* function, vorlund_stream stream, TUnit* text, std::uint32_t room,
                      std::uint32_t* length) noexcept {
    return On<CStreamObject>(function, stream, [&](CStreamObject& object) {
        RequireBuffer(text, room);
        CString read;
        // What does not arrive leaves the text as it was, which tells the end.
        constexpr const wchar* kNone = VRL_L("\1");
        read = kNone;
        CVarReader(&object.Get()) >> read;
        if (read == kNone) throw CFailure(VORLUND_ERROR_IO, "The data have ended");
        GiveText(read, text, room, length);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;

int32_t VORLUND_CALL vorlund_resource_create(vorlund_resource* resource) {
    return Guarded(__func__, [&] {
        RequirePointer(resource);
        MakeHandle<CResourceObject>(resource);
    });
}

int32_t VORLUND_CALL vorlund_resource_size(vorlund_resource resource, uint64_t* size) {
    return Ask<CResourceObject>(__func__, resource, size,
                                [](CResourceObject& object) { return object.Get().GetSize(); });
}

int32_t VORLUND_CALL vorlund_resource_get(vorlund_resource resource, uint64_t position, void* buffer,
                                          uint32_t room, uint32_t* count) {
    return GetBytes(__func__, resource, &position, buffer, room, count);
}

int32_t VORLUND_CALL vorlund_resource_get_ptr(vorlund_resource resource, const uint64_t* position,
                                              void* buffer, uint32_t room, uint32_t* count) {
    return GetBytes(__func__, resource, position, buffer, room, count);
}

int32_t VORLUND_CALL vorlund_resource_set(vorlund_resource resource, const void* bytes, uint32_t count) {
    return On<CResourceObject>(__func__, resource, [&](CResourceObject& object) {
        RequireBuffer(bytes, count);
        object.Get().SetSize(count);
        if (count == 0) return;
        const CLockedBytes locked(object.Get(), vorlund::LOCK_MODE_WRITE);
        if (!locked.Get()) throw std::bad_alloc();
        std::memcpy(locked.Get(), bytes, count);
    });
}

int32_t VORLUND_CALL vorlund_resource_load(vorlund_resource resource, vorlund_stream stream) {
    return On<CResourceObject>(__func__, resource, [&](CResourceObject& object) {
        const CUse<CStreamObject> source(stream);
        if ((source->Get().GetCapabilities() & VORLUND_CAN_SEEK) != 0) source->Get().Seek(0);
        object.Get().Load(&source->Get());
    });
}

int32_t VORLUND_CALL vorlund_resource_save(vorlund_resource resource, vorlund_sink sink) {
    return On<CResourceObject>(__func__, resource, [&](CResourceObject& object) {
        const CUse<CSinkObject> target(sink);
        object.Get().Save(&target->Get(), true);
    });
}

int32_t VORLUND_CALL vorlund_resource_get_stream(vorlund_resource resource, vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        const CUse<CResourceObject> object(resource);
        const vorlund::CInputStreamSelector selected(&object->Get());
        MakeHandle<CStreamObject>(stream, CRefPtr<vorlund::IInputStream>::Adopt(selected.GetInputStream()),
                                  object.Share());
    });
}

int32_t VORLUND_CALL vorlund_resource_get_sink(vorlund_resource resource, vorlund_sink* sink) {
    return Guarded(__func__, [&] {
        RequirePointer(sink);
        const CUse<CResourceObject> object(resource);
        const vorlund::COutputStreamSelector selected(&object->Get());
        MakeHandle<CSinkObject>(sink, CRefPtr<vorlund::IOutputStream>::Adopt(selected.GetOutputStream()),
                                object.Share());
    });
}

int32_t VORLUND_CALL vorlund_write_bool(vorlund_sink sink, int32_t value) {
    return Write(__func__, sink, value != 0);
}

int32_t VORLUND_CALL vorlund_write_int32(vorlund_sink sink, int32_t value) {
    return Write(__func__, sink, value);
}

int32_t VORLUND_CALL vorlund_write_int64(vorlund_sink sink, int64_t value) {
    return Write(__func__, sink, value);
}

int32_t VORLUND_CALL vorlund_write_int64_ptr(vorlund_sink sink, const int64_t* value) {
    return On<CSinkObject>(__func__, sink, [&](CSinkObject& object) {
        RequirePointer(value);
        vorlund::CVarWriter(&object.Get()) << *value;
    });
}

int32_t VORLUND_CALL vorlund_write_float(vorlund_sink sink, float value) {
    return Write(__func__, sink, value);
}

int32_t VORLUND_CALL vorlund_write_double(vorlund_sink sink, double value) {
    return Write(__func__, sink, value);
}

int32_t VORLUND_CALL vorlund_write_text(vorlund_sink sink, const char* text) {
    return WriteText(__func__, sink, text);
}

int32_t VORLUND_CALL vorlund_write_text16(vorlund_sink sink, const uint16_t* text) {
    return WriteText(__func__, sink, text);
}

int32_t VORLUND_CALL vorlund_read_bool(vorlund_stream stream, int32_t* value) {
    return Ask<CStreamObject>(__func__, stream, value, [](CStreamObject& object) {
        return ReadValue<unsigned char>(object) != 0 ? 1 : 0;
    });
}

int32_t VORLUND_CALL vorlund_read_int32(vorlund_stream stream, int32_t* value) {
    return Read(__func__, stream, value);
}

int32_t VORLUND_CALL vorlund_read_int64(vorlund_stream stream, int64_t* value) {
    return Read(__func__, stream, value);
}

int32_t VORLUND_CALL vorlund_read_float(vorlund_stream stream, float* value) {
    return Read(__func__, stream, value);
}

int32_t VORLUND_CALL vorlund_read_double(vorlund_stream stream, double* value) {
    return Read(__func__, stream, value);
}

int32_t VORLUND_CALL vorlund_read_text(vorlund_stream stream, char* text, uint32_t room, uint32_t* length) {
    return ReadText(__func__, stream, text, room, length);
}

int32_t VORLUND_CALL vorlund_read_text16(vorlund_stream stream, uint16_t* text, uint32_t room,
                                         uint32_t* length) {
    return ReadText(__func__, stream, text, room, length);
}
