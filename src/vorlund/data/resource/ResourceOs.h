// Writing into a resource.
#pragma once

#include "vorlund/data/resource/ResourceOsImpl.h"

#include <vorlund/ClassIds.h>

namespace vorlund {

class CResourceOs : public CResourceOsImpl<IResourceOs> {
public:
    static constexpr CId ClassId = classid::CResourceOs;

    CResourceOs();
};

} // namespace vorlund
