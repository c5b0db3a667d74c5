/// \file
/// The two functions that make a shared library a plug-in. A plug-in includes this header and defines both;
/// the CMake function `vorlund_add_plugin` exports them under the names by which the library finds them,
/// "?VrlInitPlugin@@YA_NXZ" and "?VrlClosePlugin@@YAXXZ" on every system.
#pragma once

#include <vorlund/Platform.h>

/// Called during `v.Init()`, after the plug-in was loaded: registers the plug-in's classes, decoders,
/// encoders and devices with the stores of `v`. Objects may be created. Returns true when the plug-in wants
/// to stay loaded; false unloads it at once, so it must then have registered nothing.
///
/// An exception ends `v.Init()` and leaves the library half initialised: raise only when the application
/// cannot go on.
VRL_PLUGIN_ENTRY bool VrlInitPlugin();

/// Called during `v.Close()`, just before the plug-in is unloaded. The object counter is closed by now, so
/// the destruction of an object raises `CBugException` "Not initialized": release what the plug-in holds
/// earlier, or hold nothing.
VRL_PLUGIN_ENTRY void VrlClosePlugin();
