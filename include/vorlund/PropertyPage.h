/// \file
/// `IPropertyPage`, a page of settings. One thread at a time.
#pragma once

#include <vorlund/Object.h>

#include <cstdint>

namespace vorlund {

/// A page of settings in a dialogue. What `argument` means is agreed between the page and the dialogue that
/// shows it, for example the number of a window. The library's class is a placeholder: `Open`, `Apply`,
/// `Reset` and `Close` return true, and `Show` shows a message.
class IPropertyPage : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x82AAEB0C, 0xD16E6674, 0xBE9C503F, 0xAB88093D};

    /// Prepares the page; false when that failed.
    virtual bool Open(std::uint32_t argument) = 0;
    /// Applies the settings; false when they are not valid.
    virtual bool Apply(std::uint32_t argument) = 0;
    /// Returns to the settings that are in force; false when that failed.
    virtual bool Reset(std::uint32_t argument) = 0;
    /// Called before the page goes away; false keeps it open.
    virtual bool Close(std::uint32_t argument) = 0;
    /// Shows the page; false when there is nothing to show. The library's class prints the
    /// `DEBUG_MESSAGE_BOX` message "This is the default property page object" and returns false.
    virtual bool Show() = 0;

protected:
    ~IPropertyPage() = default;
};

} // namespace vorlund
