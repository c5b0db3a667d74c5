// The plain device.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/Device.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// A device that does nothing.
class CDevice : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId = classid::CDevice;

    void Open() override {}
    void Close() override {}
};

} // namespace vorlund
