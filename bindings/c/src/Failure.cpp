#include "Failure.h"

#include "Guard.h"
#include "Records.h"
#include "Texts.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/Text.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

namespace vorlund::capi {

namespace {

// Plain bytes of fixed size: a failure for lack of memory needs none, and nothing is destroyed with a thread.
constexpr std::size_t kNameRoom = 160;
constexpr std::size_t kReasonRoom = 768;

struct TRecord {
    std::int32_t code = VORLUND_OK;
    std::int32_t exceptionType = -1;
    std::int32_t line = 0;
    std::uint32_t systemCode = 0;
    std::int32_t callbackCode = 0;
    char type[kNameRoom] = "";
    char method[kNameRoom] = "";
    char file[kNameRoom] = "";
    char reason[kReasonRoom] = "";
    char cause[kNameRoom] = "";
};

thread_local TRecord lastFailure;
thread_local std::int32_t callbackCode = 0;

/// Copies what fits, whole characters only.
template <std::size_t kRoom> void Set(char (&field)[kRoom], std::string_view text) {
    const std::size_t count = WholeCharacters(text, kRoom - 1);
    std::memcpy(field, text.data(), count);
    field[count] = 0;
}

template <std::size_t kRoom> void Set(char (&field)[kRoom], const wchar* text) {
    field[0] = 0;
    if (!text) return;
    try {
        Set(field, std::string_view(TextToUtf8(text)));
    } catch (const std::bad_alloc&) {
        // Without memory the text is missed.
    }
}

void Begin(std::int32_t code, const char* type, const char* function) {
    TRecord& record = lastFailure;
    record.code = code;
    record.exceptionType = -1;
    record.line = 0;
    record.systemCode = 0;
    record.callbackCode = callbackCode;
    Set(record.type, type);
    Set(record.method, function);
    Set(record.file, "bindings/c");
    Set(record.reason, "");
    Set(record.cause, "");
}

void SetException(const CException& raised) {
    TRecord& record = lastFailure;
    Begin(static_cast<std::int32_t>(raised.GetType()) + 1, "", "");
    record.exceptionType = raised.GetType();
    record.line = raised.GetLine();
    Set(record.type, CException::GetTypeName(raised.GetType()));
    Set(record.method, raised.GetMethod());
    Set(record.file, raised.GetFile());
    Set(record.reason, raised.GetReason());
    if (raised.GetType() != EXCEPTION_TYPE_FILE_ACCESS) return;
    const TOpenFailure failure = GetOpenFailure();
    if (failure.cause == OPEN_CAUSE_NONE) return;
    record.systemCode = failure.code;
    Set(record.cause, DescribeOpenCause(failure.cause));
}

const char* FieldOf(const TRecord& record, std::int32_t field) {
    switch (field) {
    case VORLUND_ERROR_TEXT_TYPE:
        return record.type;
    case VORLUND_ERROR_TEXT_METHOD:
        return record.method;
    case VORLUND_ERROR_TEXT_FILE:
        return record.file;
    case VORLUND_ERROR_TEXT_REASON:
        return record.reason;
    case VORLUND_ERROR_TEXT_CAUSE:
        return record.cause;
    default:
        return nullptr;
    }
}

/// For functions whose own failures are not recorded.
template <class TWork> std::int32_t Unrecorded(TWork&& work) noexcept {
    try {
        work();
        return VORLUND_OK;
    } catch (const CFailure& failure) {
        return failure.GetCode();
    } catch (const std::bad_alloc&) {
        return VORLUND_ERROR_OUT_OF_MEMORY;
    } catch (...) {
        return VORLUND_ERROR_UNKNOWN;
    }
}

template <class TUnit>
std::int32_t GiveErrorText(std::int32_t field, TUnit* text, std::uint32_t room,
                           std::uint32_t* length) noexcept {
    return Unrecorded([&] {
        const char* const found = FieldOf(lastFailure, field);
        Require(found, "There is no such text");
        GiveText(std::string_view(found), text, room, length);
    });
}

} // namespace

std::int32_t RecordFailure(const char* function) noexcept {
    try {
        throw;
    } catch (const CRecorded&) {
        return lastFailure.code;
    } catch (const CFailure& failure) {
        Begin(failure.GetCode(), "", function);
        Set(lastFailure.reason, failure.GetReason());
    } catch (const CReadFailure& failure) {
        Begin(VORLUND_ERROR_IO, "", function);
        lastFailure.systemCode = failure.GetSystemCode();
        Set(lastFailure.reason, "The file cannot be read");
    } catch (const CException& raised) {
        SetException(raised);
    } catch (const std::bad_alloc&) {
        Begin(VORLUND_ERROR_OUT_OF_MEMORY, "std::bad_alloc", function);
        Set(lastFailure.reason, "Out of memory");
    } catch (const std::exception& raised) {
        Begin(VORLUND_ERROR_STANDARD, "std::exception", function);
        Set(lastFailure.reason, std::string_view(raised.what()));
    } catch (...) {
        Begin(VORLUND_ERROR_UNKNOWN, "", function);
        Set(lastFailure.reason, "Unknown exception");
    }
    return lastFailure.code;
}

TThreadState& ThreadState() noexcept {
    thread_local TThreadState state;
    return state;
}

void NoteCallbackCode(std::int32_t code) noexcept {
    callbackCode = code;
}

std::int32_t ExchangeCallbackCode(std::int32_t code) noexcept {
    return std::exchange(callbackCode, code);
}

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_last_error(vorlund_error* record) {
    return Unrecorded([&] {
        const TRecord& last = lastFailure;
        vorlund_error full{};
        full.code = last.code;
        full.exception_type = last.exceptionType;
        full.line = last.line;
        full.system_code = last.systemCode;
        full.callback_code = last.callbackCode;
        full.type = last.type;
        full.method = last.method;
        full.file = last.file;
        full.reason = last.reason;
        full.cause = last.cause;
        GiveRecord(full, record, offsetof(vorlund_error, type));
    });
}

int32_t VORLUND_CALL vorlund_error_text(int32_t field, char* text, uint32_t room, uint32_t* length) {
    return GiveErrorText(field, text, room, length);
}

int32_t VORLUND_CALL vorlund_error_text16(int32_t field, uint16_t* text, uint32_t room, uint32_t* length) {
    return GiveErrorText(field, text, room, length);
}

int32_t VORLUND_CALL vorlund_clear_error(void) {
    return Unrecorded([] { lastFailure = TRecord(); });
}
