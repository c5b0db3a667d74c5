#include "Notes.h"

#include <vorlund/Debug.h>
#include <vorlund/DecodeNotes.h>
#include <vorlund/Platform.h>

#include <string>

using namespace vorlund;

void Note(std::string_view text) {
    const wstring wide(text.begin(), text.end());
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("sndfile: %s"), wide.c_str());
    NoteRemark(wide.c_str());
}

void NoteRefusal(std::string_view text) {
    NoteValue(VRL_L("libsndfile"), wstring(text.begin(), text.end()).c_str());
}
