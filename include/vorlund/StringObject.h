/// \file
/// `IStringObject`, a text as an object. One thread at a time.
#pragma once

#include <vorlund/Object.h>
#include <vorlund/String.h>

namespace vorlund {

/// Carries a text; empty at first.
class IStringObject : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xE32A1605, 0xA9BD4213, 0xA3EA2131, 0x1D76690C};

    /// A copy of the text.
    virtual CString GetString() = 0;

    /// Copies `text`, which must not be null. Raises `std::bad_alloc`, with the text as it was.
    virtual void SetString(const wchar* text) = 0;

protected:
    ~IStringObject() = default;
};

} // namespace vorlund
