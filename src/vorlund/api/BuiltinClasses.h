// The classes and decoders that every initialised library has.
#pragma once

namespace vorlund {

class CClassStore;
class CCodecClassStore;

/// Registers the built-in classes, in the order of the table.
void RegisterBuiltinClasses(CClassStore& store);

/// Registers the built-in decoders; their classes must be registered before.
void RegisterBuiltinDecoders(CCodecClassStore& store);

} // namespace vorlund
