// Streams that are written.

#include "vorlund_c/sink.h"

#include "CallbackSink.h"
#include "Calls.h"
#include "Files.h"
#include "SinkObject.h"
#include "Texts.h"

#include <vorlund/MemoryStream.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamErrors.h>

namespace vorlund::capi {

namespace {

template <class TUnit> void OpenFile(const TUnit* path, vorlund_sink* sink) {
    RequirePointer(sink);
    MakeHandle<CSinkObject>(sink, OpenOutputFile(TakePath(path)));
}

std::int32_t Seek(const char* function, vorlund_sink sink, const std::int64_t* position) noexcept {
    return On<CSinkObject>(function, sink, [&](CSinkObject& object) {
        RequirePointer(position);
        object.Get().Seek(*position);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;
using vorlund::IMemoryOutputStream;
using vorlund::IOutputStream;

int32_t VORLUND_CALL vorlund_sink_open_file(const char* path, vorlund_sink* sink) {
    return Guarded(__func__, [&] { OpenFile(path, sink); });
}

int32_t VORLUND_CALL vorlund_sink_open_file16(const uint16_t* path, vorlund_sink* sink) {
    return Guarded(__func__, [&] { OpenFile(path, sink); });
}

int32_t VORLUND_CALL vorlund_sink_open_memory(vorlund_sink* sink) {
    return Guarded(__func__, [&] {
        RequirePointer(sink);
        auto memory = CRefPtr<IMemoryOutputStream>::Adopt(vorlund::CreateMemoryOutput());
        MakeHandle<CSinkObject>(sink, CRefPtr<IOutputStream>(std::move(memory)));
    });
}

int32_t VORLUND_CALL vorlund_sink_get_memory(vorlund_sink sink, const void** bytes, uint64_t* count) {
    return On<CSinkObject>(__func__, sink, [&](CSinkObject& object) {
        const auto memory = object.Share().Query<IMemoryOutputStream>();
        if (!memory) throw CFailure(VORLUND_ERROR_NOT_SUPPORTED, "The sink is not in memory");
        if (bytes) *bytes = memory->GetData();
        if (count) *count = static_cast<uint64_t>(memory->GetLength());
    });
}

int32_t VORLUND_CALL vorlund_sink_create(const vorlund_sink_callbacks* callbacks, void* user,
                                         vorlund_sink* sink) {
    return Guarded(__func__, [&] {
        RequirePointer(sink);
        MakeCallbackSink(callbacks, user, sink);
    });
}

int32_t VORLUND_CALL vorlund_sink_write(vorlund_sink sink, const void* bytes, uint32_t count) {
    return On<CSinkObject>(__func__, sink, [&](CSinkObject& object) {
        RequireBuffer(bytes, count);
        object.Get().Write(bytes, count);
    });
}

int32_t VORLUND_CALL vorlund_sink_seek(vorlund_sink sink, int64_t position) {
    return Seek(__func__, sink, &position);
}

int32_t VORLUND_CALL vorlund_sink_seek_ptr(vorlund_sink sink, const int64_t* position) {
    return Seek(__func__, sink, position);
}

int32_t VORLUND_CALL vorlund_sink_tell(vorlund_sink sink, int64_t* position) {
    return Ask<CSinkObject>(__func__, sink, position,
                            [](CSinkObject& object) { return object.Get().Tell(); });
}

int32_t VORLUND_CALL vorlund_sink_length(vorlund_sink sink, int64_t* length) {
    return Ask<CSinkObject>(__func__, sink, length,
                            [](CSinkObject& object) { return object.Get().GetLength(); });
}

int32_t VORLUND_CALL vorlund_sink_flush(vorlund_sink sink) {
    return On<CSinkObject>(__func__, sink, [](CSinkObject& object) {
        vorlund::FlushOutput(object.Get());
        // Of files the call before has done it; resources have nothing to hand on and refuse.
        if (!object.Share().Query<vorlund::IResourceOs>()) object.Get().Flush();
    });
}

int32_t VORLUND_CALL vorlund_sink_close(vorlund_sink sink) {
    return On<CSinkObject>(__func__, sink, [](CSinkObject& object) { vorlund::CloseOutput(object.Get()); });
}
