// The DLL beside the plug-in.
#include "SdlLibrary.h"

const TSdlLibrary* FindSdlLibrary() {
    static const TSdlLibrary library{
#define VORLUND_SDL_ADDRESS(name) &SDL_##name,
        VORLUND_SDL_FUNCTIONS(VORLUND_SDL_ADDRESS)
#undef VORLUND_SDL_ADDRESS
    };
    return &library;
}

void SilenceThisThread() {
    // Nothing is printed here.
}
