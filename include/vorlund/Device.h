/// \file
/// Devices: what plays sound or shows pictures, as plug-ins and applications supply it.
#pragma once

#include <vorlund/Object.h>

namespace vorlund {

/// A device. Classes of devices are registered with the device class store under their type, and derive from
/// `CObjectImpl<IDevice>` or from an interface of their own that extends this one. One thread at a time.
///
/// \code{.cpp}
/// class CSilence : public CObjectImpl<IDevice> {
/// public:
///     static constexpr CId ClassId{0x0A6D3F51, 0x7B2E49C8, 0x93D1E640, 0x5C8F2B7A};
///     void Open() override { std::printf("quiet\n"); } // prints quiet
///     void Close() override {}
/// };
///
/// v.GetClassStore().RegisterClassVrl({CSilence::ClassId, VRL_L("mine::CSilence"), &NewObject<CSilence>});
/// const auto device = CreateAs<IDevice>(CSilence::ClassId);
/// device->Open();
/// device->Close();
/// \endcode
class IDevice : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x24F097B7, 0x4DFD4301, 0xA1E71E1B, 0xA6328858};

    /// Takes possession of the hardware, window or service behind the device. Which exceptions it raises, the
    /// device class documents; the default device does nothing.
    virtual void Open() = 0;

    /// Gives back what `Open` took; nothing happens when the device is not open. The default device does
    /// nothing.
    virtual void Close() = 0;

protected:
    ~IDevice() = default;
};

} // namespace vorlund
