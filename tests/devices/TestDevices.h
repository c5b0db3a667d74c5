/// \file
/// Device classes of the tests.
#pragma once

#include <vorlund/Device.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Vorlund.h>

#include "support/Streams.h"

namespace vorlund::test {

/// Device class `index`, which counts its living objects.
template <unsigned int index> class CTestDevice : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId{0x7E57DE71, 0x3A5C7E90, 0xB2D4F618, index};

    void Open() override {}
    void Close() override {}

private:
    CLiveObject live_;
};

/// Registers `TClass` with the class store.
template <class TClass> const CId& RegisterDeviceClass() {
    v.GetClassStore().RegisterClassVrl({TClass::ClassId, VRL_L("test::CTestDevice"), &NewObject<TClass>});
    return TClass::ClassId;
}

} // namespace vorlund::test
