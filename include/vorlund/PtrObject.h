/// \file
/// `IPtrObject`, a pointer as an object. One thread at a time.
#pragma once

#include <vorlund/Object.h>

namespace vorlund {

/// Carries an untyped pointer, which is neither owned nor looked at; null at first.
class IPtrObject : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x145C5C82, 0x7D5D4D37, 0x988D01D0, 0xDAA08333};

    /// The pointer.
    virtual void* GetPtr() = 0;
    /// Replaces the pointer.
    virtual void SetPtr(void* pointer) = 0;

protected:
    ~IPtrObject() = default;
};

} // namespace vorlund
