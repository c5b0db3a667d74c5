#include "vorlund/api/tables/TableInput.h"

#include "vorlund/api/tables/TableText.h"

#include <vorlund/DataFormat.h>
#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace vorlund::tables {

CTableInput::CTableInput(CRefPtr<IInputStream> stream) : record_{}, stream_(std::move(stream)) {
    record_.size = sizeof(vorlund_plugin_input);
    record_.has_positions = HasPositions();
    record_.read = &OnRead;
    record_.seek = &OnSeek;
    record_.tell = &OnTell;
    record_.length = &OnLength;
    record_.format = &OnFormat;
    record_.explain = &OnExplain;
    record_.note_container = &OnContainer;
    record_.note_value = &OnValue;
    record_.note_remark = &OnRemark;
    record_.owner = this;
}

bool CTableInput::HasPositions() const {
    constexpr std::uint32_t kNeeded = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
    return (stream_->GetCapabilities() & kNeeded) == kNeeded;
}

void CTableInput::Rewind() {
    if (record_.has_positions) stream_->Seek(0);
}

void CTableInput::Raise(std::int32_t code) const {
    if (failure_) std::rethrow_exception(failure_);
    if (code == VORLUND_PLUGIN_NO_MEMORY) throw std::bad_alloc();
}

/// Calls `act` with the input, which gives a result; one for an exception.
template <class TAct> std::int32_t CTableInput::Run(const vorlund_plugin_input* input, TAct act) noexcept {
    if (!input) return VORLUND_PLUGIN_FAILED;
    CTableInput& self = *static_cast<const TRecord*>(input)->owner;
    if (!self.isInUse_) return VORLUND_PLUGIN_FAILED;
    try {
        return act(self);
    } catch (const std::bad_alloc&) {
        self.failure_ = std::current_exception();
        return VORLUND_PLUGIN_NO_MEMORY;
    } catch (...) {
        self.failure_ = std::current_exception();
        return VORLUND_PLUGIN_UNREADABLE;
    }
}

std::int32_t CTableInput::OnRead(const vorlund_plugin_input* input, void* buffer, std::uint32_t size,
                                 std::uint32_t* count) {
    return Run(input, [=](const CTableInput& self) {
        if (!buffer || !count) return VORLUND_PLUGIN_FAILED;
        *count = 0;
        // A stream of the application may say anything too.
        *count = static_cast<std::uint32_t>(std::min<std::uint64_t>(self.stream_->Read(buffer, size), size));
        return VORLUND_PLUGIN_OK;
    });
}

std::int32_t CTableInput::OnSeek(const vorlund_plugin_input* input, const std::int64_t* position) {
    return Run(input, [=](const CTableInput& self) {
        if (!position || *position < 0) return VORLUND_PLUGIN_FAILED;
        if (!self.record_.has_positions) return VORLUND_PLUGIN_NOT_SUPPORTED;
        self.stream_->Seek(*position);
        return VORLUND_PLUGIN_OK;
    });
}

std::int32_t CTableInput::OnTell(const vorlund_plugin_input* input, std::int64_t* position) {
    return Run(input, [=](const CTableInput& self) {
        if (!position) return VORLUND_PLUGIN_FAILED;
        if (!self.record_.has_positions) return VORLUND_PLUGIN_NOT_SUPPORTED;
        *position = self.stream_->Tell();
        return VORLUND_PLUGIN_OK;
    });
}

std::int32_t CTableInput::OnLength(const vorlund_plugin_input* input, std::int64_t* length) {
    return Run(input, [=](const CTableInput& self) {
        if (!length) return VORLUND_PLUGIN_FAILED;
        *length = self.stream_->GetLength();
        return VORLUND_PLUGIN_OK;
    });
}

std::int32_t CTableInput::OnFormat(const vorlund_plugin_input* input, vorlund_plugin_format* format) {
    return Run(input, [=](const CTableInput& self) {
        if (!format) return VORLUND_PLUGIN_FAILED;
        const TDataFormat& record = self.stream_->GetFormat();
        if (record.size < sizeof record || record.size > sizeof *format) return VORLUND_PLUGIN_NOT_SUPPORTED;
        std::memcpy(format, &record, record.size);
        return VORLUND_PLUGIN_OK;
    });
}

void CTableInput::OnExplain(const vorlund_plugin_input* input, const char* reason) {
    Run(input, [=](CTableInput& self) {
        self.reason_ = ReadText(reason);
        return VORLUND_PLUGIN_OK;
    });
}

void CTableInput::OnContainer(const vorlund_plugin_input* input, const char* name) {
    Run(input, [=](const CTableInput&) {
        if (name) NoteContainer(ReadText(name).c_str());
        return VORLUND_PLUGIN_OK;
    });
}

void CTableInput::OnValue(const vorlund_plugin_input* input, const char* name, const std::int64_t* value) {
    Run(input, [=](const CTableInput&) {
        if (name && value) NoteValue(ReadText(name).c_str(), *value);
        return VORLUND_PLUGIN_OK;
    });
}

void CTableInput::OnRemark(const vorlund_plugin_input* input, const char* text) {
    Run(input, [=](const CTableInput&) {
        if (text) NoteRemark(ReadText(text).c_str());
        return VORLUND_PLUGIN_OK;
    });
}

} // namespace vorlund::tables
