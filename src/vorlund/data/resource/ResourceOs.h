// Writing into a resource.
#pragma once

#include "vorlund/data/resource/ResourceOsImpl.h"

#include <vorlund/ClassIds.h>

namespace vorlund {

extern const TResourceOsFailures kResourceOsFailures;

class CResourceOs : public CResourceOsImpl<IResourceOs, TWritePlace::Position, kResourceOsFailures> {
public:
    static constexpr CId ClassId = classid::CResourceOs;
};

} // namespace vorlund
