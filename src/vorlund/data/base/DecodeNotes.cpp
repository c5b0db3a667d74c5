#include "vorlund/api/text/TextFormat.h"
#include "vorlund/data/base/NoteTaking.h"

#include <vorlund/DecodeNotes.h>

#include <iterator>
#include <utility>

namespace vorlund {
namespace notes {
namespace {

constinit thread_local TNotes* current = nullptr;

/// Changes the notes of the calling thread, if somebody takes them.
template <class TChange> void Change(TChange change) noexcept {
    if (takers.load(std::memory_order_relaxed) == 0 || !current) return;
    try {
        change(*current);
    } catch (...) {
        // No memory for the note.
    }
}

void Append(wstring& list, const wstring& item) {
    if (!list.empty()) list += VRL_L(", ");
    list += item;
}

wstring OrEmpty(const wchar* text) {
    return text ? wstring(text) : wstring();
}

} // namespace

constinit std::atomic<int> takers = 0;

CTaker::CTaker(TNotes* notes) noexcept : outer_(std::exchange(current, notes)) {
    takers.fetch_add(1, std::memory_order_relaxed);
}

CTaker::~CTaker() {
    takers.fetch_sub(1, std::memory_order_relaxed);
    current = outer_;
}

void AddBytesRead(std::uint64_t count) noexcept {
    if (current) current->bytesRead += count;
}

} // namespace notes

using namespace notes;

void NoteContainer(const wchar* name) {
    Change([name](TNotes& notes) { notes.container = OrEmpty(name); });
}

void NoteValue(const wchar* name, std::int64_t value) {
    Change([name, value](TNotes& notes) {
        wchar digits[24];
        FormatArguments(digits, std::size(digits), VRL_L(" %lld"), static_cast<long long>(value));
        Append(notes.values, OrEmpty(name) + digits);
    });
}

void NoteValue(const wchar* name, const wchar* text) {
    Change([name, text](TNotes& notes) {
        Append(notes.values, OrEmpty(name) + VRL_L(" \"") + OrEmpty(text) + VRL_L("\""));
    });
}

void NoteRemark(const wchar* text) {
    Change([text](TNotes& notes) { Append(notes.remarks, OrEmpty(text)); });
}

} // namespace vorlund
