// What a plug-in registers while its init entry runs. The stores note it; who runs the entry takes the notes
// of the calling thread meanwhile.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/String.h>

#include <vector>

namespace vorlund::registrations {

enum class TKind { Class, Decoder, Encoder, Device };

struct TItem {
    TKind kind;
    CId classId;
    /// Only of a class. Copied, because the plug-in that owns it may go.
    CString name;
};

struct TNotes {
    std::vector<TItem> items;
    /// What was named by `NotePluginLibrary`, separated by ", ".
    wstring libraries;
};

/// Takes the notes of the calling thread for the length of a block; an inner taker instead of the outer one.
class CTaker {
public:
    explicit CTaker(TNotes& notes) noexcept;
    CTaker(const CTaker&) = delete;
    CTaker& operator=(const CTaker&) = delete;
    ~CTaker();

private:
    TNotes* const outer_;
};

/// Raise nothing: a note for which there is no memory is lost.
void Note(TKind kind, const CId& classId, const wchar* name = nullptr) noexcept;
void NoteLibrary(const wchar* text) noexcept;

} // namespace vorlund::registrations
