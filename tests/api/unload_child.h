/// \file
/// Loading and unloading a module at run time, for unload_child.
#pragma once

namespace vorlund::test {

/// Loads the module of that name (without an ending) from the program's folder; null when that fails.
void* LoadModule(const char* name);

/// A function of the module, or null.
void (*FindFunction(void* module, const char* name))();

/// Unloads the module. Returns false when that fails.
bool UnloadModule(void* module);

/// True while the shared library of that name (without an ending) is in the process.
bool IsLoaded(const char* name);

} // namespace vorlund::test
