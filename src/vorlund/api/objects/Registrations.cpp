#include "vorlund/api/objects/Registrations.h"

#include <utility>

namespace vorlund::registrations {
namespace {

constinit thread_local TNotes* current = nullptr;

template <class TChange> void Change(TChange change) noexcept {
    if (!current) return;
    try {
        change(*current);
    } catch (...) {
        // No memory for the note.
    }
}

} // namespace

CTaker::CTaker(TNotes& notes) noexcept : outer_(std::exchange(current, &notes)) {}

CTaker::~CTaker() {
    current = outer_;
}

void Note(TKind kind, const CId& classId, const wchar* name) noexcept {
    Change([&](TNotes& notes) { notes.items.push_back({kind, classId, name}); });
}

void NoteLibrary(const wchar* text) noexcept {
    Change([text](TNotes& notes) {
        if (!text || !*text) return;
        if (!notes.libraries.empty()) notes.libraries += VRL_L(", ");
        notes.libraries += text;
    });
}

} // namespace vorlund::registrations
