// The functions of SDL's audio.
#pragma once

#define SDL_MAIN_HANDLED
#include <SDL2/SDL.h>

/// X(name without "SDL_")
#define VORLUND_SDL_FUNCTIONS(X)                                                                             \
    X(AddEventWatch)                                                                                         \
    X(CloseAudioDevice)                                                                                      \
    X(DelEventWatch)                                                                                         \
    X(GetAudioDeviceName)                                                                                    \
    X(GetAudioDeviceSpec)                                                                                    \
    X(GetAudioDeviceStatus)                                                                                  \
    X(GetCurrentAudioDriver)                                                                                 \
    X(GetDefaultAudioInfo)                                                                                   \
    X(GetError)                                                                                              \
    X(GetHint)                                                                                               \
    X(GetNumAudioDevices)                                                                                    \
    X(InitSubSystem)                                                                                         \
    X(OpenAudioDevice)                                                                                       \
    X(PauseAudioDevice)                                                                                      \
    X(QuitSubSystem)                                                                                         \
    X(ResetHint)                                                                                             \
    X(SetHintWithPriority)                                                                                   \
    X(SetMainReady)                                                                                          \
    X(TLSCleanup)                                                                                            \
    X(WasInit)                                                                                               \
    X(free)

struct TSdlLibrary {
#define VORLUND_SDL_MEMBER(name) decltype(&SDL_##name) name;
    VORLUND_SDL_FUNCTIONS(VORLUND_SDL_MEMBER)
#undef VORLUND_SDL_MEMBER
};

/// Loads SDL when it is asked for first; null without it, or when it is older than 2.24. Any thread.
const TSdlLibrary* FindSdlLibrary();

/// What the library below SDL would print of failures of the calling thread is not printed: SDL tells of the
/// failure itself. Other threads, and what an application has set for them, stay as they are.
void SilenceThisThread();
