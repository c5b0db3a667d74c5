// The default property page.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/Debug.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/PropertyPage.h>

namespace vorlund {

/// A placeholder without settings.
class CPropertyPage : public CObjectImpl<IPropertyPage> {
public:
    static constexpr CId ClassId = classid::CPropertyPage;

    bool Open(std::uint32_t) override { return true; }
    bool Apply(std::uint32_t) override { return true; }
    bool Reset(std::uint32_t) override { return true; }
    bool Close(std::uint32_t) override { return true; }
    bool Show() override {
        CDebug::PrintMessage(DEBUG_MESSAGE_BOX, VRL_L("This is the default property page object"));
        return false;
    }
};

} // namespace vorlund
