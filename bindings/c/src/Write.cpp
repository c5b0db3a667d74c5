// Writing sound files.

#include "vorlund_c/write.h"

#include "Calls.h"
#include "Files.h"
#include "Records.h"
#include "Texts.h"
#include "Writing.h"

namespace vorlund::capi {

namespace {

/// A writer by its handle: what it is told before it is opened, and then what writes.
class CWriterObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Writer;

    explicit CWriterObject(const wstring& kind) : CHandleObject(Kind), plan_(kind) {
        chain_ = std::make_shared<CChain>();
    }
    ~CWriterObject() override { Drop(std::move(writing_)); }

    /// What it is told before. Raises when it is opened.
    CWritingPlan& GetPlan() {
        if (writing_) throw CFailure(VORLUND_ERROR_INVALID_STATE, "The file is begun");
        return plan_;
    }
    void Open(std::shared_ptr<CWriting> writing) {
        writing_ = std::move(writing);
        plan_.GiveUpEncoder();
    }
    const std::shared_ptr<CWriting>& GetWriting() const {
        if (!writing_) throw CFailure(VORLUND_ERROR_INVALID_STATE, "No file is begun");
        return writing_;
    }

private:
    CWritingPlan plan_;
    std::shared_ptr<CWriting> writing_;
};

template <class TUnit>
std::int32_t Create(const char* function, const TUnit* kind, vorlund_writer* writer) noexcept {
    return Guarded(function, [&] {
        RequirePointer(writer);
        MakeHandle<CWriterObject>(writer, TakeText(kind));
    });
}

template <class TUnit>
std::int32_t SetOption(const char* function, vorlund_writer writer, const TUnit* name,
                       const TUnit* value) noexcept {
    return On<CWriterObject>(function, writer, [&](CWriterObject& object) {
        object.GetPlan().SetOption(TakeText(name), TakeText(value));
    });
}

template <class TUnit>
std::int32_t SetTag(const char* function, vorlund_writer writer, const TUnit* name,
                    const TUnit* text) noexcept {
    return On<CWriterObject>(function, writer, [&](CWriterObject& object) {
        object.GetPlan().SetTag(TakeText(name), TakeText(text));
    });
}

template <class TUnit>
std::int32_t OpenFile(const char* function, vorlund_writer writer, const TUnit* path,
                      const vorlund_audio_format* format) noexcept {
    return On<CWriterObject>(function, writer, [&](CWriterObject& object) {
        const CWritingPlan& plan = object.GetPlan();
        const TSoundFormat sound = plan.TakeFormat(format);
        const auto file = OpenOutputFile(TakePath(path));
        object.Open(std::make_shared<CWriting>(plan, file.Get(), sound, nullptr));
    });
}

/// `work` with what writes.
template <class TWork>
std::int32_t OnWriting(const char* function, vorlund_writer writer, TWork&& work) noexcept {
    return On<CWriterObject>(function, writer, [&](CWriterObject& object) {
        const CUse<CWriting> writing(object.GetWriting());
        work(*writing);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_writer_create(const char* kind, vorlund_writer* writer) {
    return Create(__func__, kind, writer);
}

int32_t VORLUND_CALL vorlund_writer_create16(const uint16_t* kind, vorlund_writer* writer) {
    return Create(__func__, kind, writer);
}

int32_t VORLUND_CALL vorlund_writer_option(vorlund_writer writer, const char* name, const char* value) {
    return SetOption(__func__, writer, name, value);
}

int32_t VORLUND_CALL vorlund_writer_option16(vorlund_writer writer, const uint16_t* name,
                                             const uint16_t* value) {
    return SetOption(__func__, writer, name, value);
}

int32_t VORLUND_CALL vorlund_writer_tag(vorlund_writer writer, const char* name, const char* text) {
    return SetTag(__func__, writer, name, text);
}

int32_t VORLUND_CALL vorlund_writer_tag16(vorlund_writer writer, const uint16_t* name, const uint16_t* text) {
    return SetTag(__func__, writer, name, text);
}

int32_t VORLUND_CALL vorlund_writer_open_file(vorlund_writer writer, const char* path,
                                              const vorlund_audio_format* format) {
    return OpenFile(__func__, writer, path, format);
}

int32_t VORLUND_CALL vorlund_writer_open_file16(vorlund_writer writer, const uint16_t* path,
                                                const vorlund_audio_format* format) {
    return OpenFile(__func__, writer, path, format);
}

int32_t VORLUND_CALL vorlund_writer_open_sink(vorlund_writer writer, vorlund_sink sink,
                                              const vorlund_audio_format* format) {
    return On<CWriterObject>(__func__, writer, [&](CWriterObject& object) {
        const CWritingPlan& plan = object.GetPlan();
        const TSoundFormat sound = plan.TakeFormat(format);
        const CUse<CSinkObject> target(sink);
        object.Open(std::make_shared<CWriting>(plan, &target->Get(), sound, target.Share()));
    });
}

int32_t VORLUND_CALL vorlund_writer_write(vorlund_writer writer, const void* bytes, uint32_t count) {
    return OnWriting(__func__, writer, [&](CWriting& writing) {
        RequireBuffer(bytes, count);
        writing.Write(bytes, count);
    });
}

int32_t VORLUND_CALL vorlund_writer_write_frames(vorlund_writer writer, uint32_t sample_format,
                                                 const void* samples, uint32_t frames) {
    return OnWriting(__func__, writer, [&](CWriting& writing) {
        RequireBuffer(samples, frames);
        Require(sample_format <= VORLUND_SAMPLE_24BIT, "Unknown sample format");
        writing.WriteFrames(sample_format, samples, frames);
    });
}

int32_t VORLUND_CALL vorlund_writer_write_stream(vorlund_writer writer, vorlund_stream stream,
                                                 uint64_t* frames) {
    return OnWriting(__func__, writer, [&](CWriting& writing) {
        const CUse<CStreamObject> source(stream);
        uint64_t count = 0;
        uint64_t& written = frames ? *frames : count;
        written = 0;
        writing.WriteStream(*source, written);
    });
}

int32_t VORLUND_CALL vorlund_writer_finish(vorlund_writer writer) {
    return OnWriting(__func__, writer, [](CWriting& writing) { writing.Finish(); });
}
