#include "Notes.h"

#include <vorlund/Debug.h>

#include <string>

void Note(std::string_view text) {
    vorlund::CDebug::PrintMessage(vorlund::DEBUG_MESSAGE_OUTPUT, VRL_L("sndfile: %S"),
                                  std::string(text).c_str());
}
