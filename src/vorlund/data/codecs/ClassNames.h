// The names of classes and streams, for people.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/String.h>

namespace vorlund {

/// The registered name of the class; the text form of its identifier when the class store does not know it.
CString GetClassName(const CId& classId);

/// A stream whose name in a chain is not that of its class.
class INamedLink : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0x0D6B4C3E, 0x92A14F57, 0x86E05D1B, 0xF73829C4};

    virtual CString GetLinkName() = 0;

protected:
    ~INamedLink() = default;
};

} // namespace vorlund
