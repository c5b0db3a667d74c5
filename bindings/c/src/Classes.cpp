// Classes, objects of any class, and the lists of decoders and encoders.

#include "vorlund_c/classes.h"

#include "Calls.h"
#include "StreamObject.h"
#include "Texts.h"

#include <vorlund/Each.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

namespace vorlund::capi {

namespace {

class CAnyObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Object;

    explicit CAnyObject(CRefPtr<IObject> object) : CHandleObject(Kind), object_(std::move(object)) {
        chain_ = std::make_shared<CChain>();
    }

    IObject& Get() const {
        if (!object_) throw CFailure(VORLUND_ERROR_HANDLE, "The object is a stream now");
        return *object_;
    }
    void GiveUp() { object_ = {}; }
    /// The object as another interface. Raises where it has none.
    template <class TInterface> CRefPtr<TInterface> As() const {
        auto found = CRefPtr<IObject>::Share(&Get()).Query<TInterface>();
        if (!found) throw CFailure(VORLUND_ERROR_NOT_SUPPORTED, "The object has no such interface");
        return found;
    }

private:
    CSafeRefPtr<IObject> object_;
};

std::vector<TClassInfo> ListClasses() {
    std::vector<TClassInfo> classes;
    for (const TClassInfo& info : EachRecord<TClassInfo>(v.GetClassStore().EnumerateClasses()))
        classes.push_back(info);
    return classes;
}

template <class TRecord> std::vector<TRecord> ListRecords(IObjectEnumerator* records) {
    std::vector<TRecord> list;
    for (const TRecord& record : EachRecord<TRecord>(records)) list.push_back(record);
    return list;
}

std::vector<TDecoderClassInfo> ListDecoders() {
    return ListRecords<TDecoderClassInfo>(v.GetCodecClassStore().EnumerateDecoders());
}

std::vector<TEncoderClassInfo> ListEncoders() {
    return ListRecords<TEncoderClassInfo>(v.GetCodecClassStore().EnumerateEncoders());
}

template <class TRow> const TRow& At(const std::vector<TRow>& rows, std::uint32_t index) {
    Require(index < rows.size(), "There is no such entry");
    return rows[index];
}

template <class TList> std::int32_t Count(const char* function, std::uint32_t* count, TList&& list) noexcept {
    return Guarded(function, [&] {
        RequirePointer(count);
        *count = static_cast<std::uint32_t>(list().size());
    });
}

template <class TList>
std::int32_t GiveIds(const char* function, std::uint32_t index, std::uint32_t* classId,
                     std::uint32_t* inputId, std::uint32_t* outputId, TList&& list) noexcept {
    return Guarded(function, [&] {
        const auto rows = list();
        const auto& row = At(rows, index);
        if (classId) GiveId(row.classId, classId);
        if (inputId) GiveId(row.inputFormatId, inputId);
        if (outputId) GiveId(row.outputFormatId, outputId);
    });
}

template <class TUnit>
std::int32_t GiveName(const char* function, std::uint32_t index, TUnit* text, std::uint32_t room,
                      std::uint32_t* length) noexcept {
    return Guarded(function, [&] { GiveText(At(ListClasses(), index).name, text, room, length); });
}

template <class TUnit>
std::int32_t FindClass(const char* function, const TUnit* name, std::uint32_t* id) noexcept {
    return Guarded(function, [&] { GiveId(v.GetClassStore().GetClassInfo(TakeText(name).c_str())->id, id); });
}

template <class TCreate>
std::int32_t Create(const char* function, vorlund_object* object, TCreate&& create) noexcept {
    return Guarded(function, [&] {
        RequirePointer(object);
        auto made = CRefPtr<IObject>::Adopt(create());
        if (!made) throw CFailure(VORLUND_ERROR_FAILED, "The class makes no object");
        MakeHandle<CAnyObject>(object, std::move(made));
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;
using vorlund::IInputStream;
using vorlund::v;

int32_t VORLUND_CALL vorlund_class_count(uint32_t* count) {
    return Count(__func__, count, ListClasses);
}

int32_t VORLUND_CALL vorlund_class_id(uint32_t index, uint32_t* id) {
    return Guarded(__func__, [&] { GiveId(At(ListClasses(), index).id, id); });
}

int32_t VORLUND_CALL vorlund_class_name(uint32_t index, char* text, uint32_t room, uint32_t* length) {
    return GiveName(__func__, index, text, room, length);
}

int32_t VORLUND_CALL vorlund_class_name16(uint32_t index, uint16_t* text, uint32_t room, uint32_t* length) {
    return GiveName(__func__, index, text, room, length);
}

int32_t VORLUND_CALL vorlund_class_find(const char* name, uint32_t* id) {
    return FindClass(__func__, name, id);
}

int32_t VORLUND_CALL vorlund_class_find16(const uint16_t* name, uint32_t* id) {
    return FindClass(__func__, name, id);
}

int32_t VORLUND_CALL vorlund_object_create(const uint32_t* class_id, vorlund_object* object) {
    return Create(__func__, object, [&] { return v.GetClassStore().CreateObject(TakeId(class_id)); });
}

int32_t VORLUND_CALL vorlund_object_create_named(const char* name, vorlund_object* object) {
    return Create(__func__, object, [&] { return v.GetClassStore().CreateObject(TakeText(name).c_str()); });
}

int32_t VORLUND_CALL vorlund_object_create_named16(const uint16_t* name, vorlund_object* object) {
    return Create(__func__, object, [&] { return v.GetClassStore().CreateObject(TakeText(name).c_str()); });
}

int32_t VORLUND_CALL vorlund_object_info(vorlund_object object, uint32_t* class_id, int32_t* number) {
    return On<CAnyObject>(__func__, object, [&](CAnyObject& any) {
        if (class_id) GiveId(any.Get().GetClassId(), class_id);
        if (number) *number = any.Get().GetObjectNumber();
    });
}

int32_t VORLUND_CALL vorlund_object_has_interface(vorlund_object object, const uint32_t* interface_id,
                                                  int32_t* has_interface) {
    return Ask<CAnyObject>(__func__, object, has_interface, [&](CAnyObject& any) {
        return CRefPtr<vorlund::IObject>::Adopt(any.Get().QueryInterface(TakeId(interface_id))) ? 1 : 0;
    });
}

int32_t VORLUND_CALL vorlund_object_get_stream(vorlund_object object, vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        const CUse<CAnyObject> any(object);
        MakeHandle<CStreamObject>(stream, any->As<IInputStream>(), any.Share());
    });
}

int32_t VORLUND_CALL vorlund_object_connect(vorlund_object object, vorlund_stream source,
                                            vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        const CUse<CAnyObject> any(object);
        const CUse<CStreamObject> from(source);
        auto filter = any->As<vorlund::IInputStreamFilter>();
        filter->Connect(&from->Get());
        // From here on the source's chain counts its references, and nobody else.
        MakeHandle<CStreamObject>(stream, CRefPtr<IInputStream>(std::move(filter)), from.Share());
        any->GiveUp();
        ForgetHandle(object);
    });
}

int32_t VORLUND_CALL vorlund_decoder_count(uint32_t* count) {
    return Count(__func__, count, ListDecoders);
}

int32_t VORLUND_CALL vorlund_decoder_ids(uint32_t index, uint32_t* class_id, uint32_t* input_id,
                                         uint32_t* output_id) {
    return GiveIds(__func__, index, class_id, input_id, output_id, ListDecoders);
}

int32_t VORLUND_CALL vorlund_encoder_count(uint32_t* count) {
    return Count(__func__, count, ListEncoders);
}

int32_t VORLUND_CALL vorlund_encoder_ids(uint32_t index, uint32_t* class_id, uint32_t* input_id,
                                         uint32_t* output_id) {
    return GiveIds(__func__, index, class_id, input_id, output_id, ListEncoders);
}
