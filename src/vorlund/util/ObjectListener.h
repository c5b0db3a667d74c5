// The plain listener.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// A base for listeners: does nothing about what it is told.
class CObjectListener : public CObjectImpl<IObjectListener> {
public:
    static constexpr CId ClassId = classid::CObjectListener;

    void OnObjectDestroyed(IObject*) override {}
};

} // namespace vorlund
