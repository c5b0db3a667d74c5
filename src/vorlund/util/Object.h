// The plain object.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// An object with nothing but its identity.
class CObject : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId = classid::CObject;
};

} // namespace vorlund
