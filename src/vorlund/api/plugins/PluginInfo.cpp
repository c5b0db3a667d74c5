#include <vorlund/PluginInfo.h>

#include "vorlund/api/objects/Registrations.h"

namespace vorlund {

void NotePluginLibrary(const wchar* text) {
    registrations::NoteLibrary(text);
}

} // namespace vorlund
