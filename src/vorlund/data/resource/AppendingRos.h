// Writing to the end of a resource.
#pragma once

#include "vorlund/data/resource/ResourceOsImpl.h"

#include <vorlund/ClassIds.h>

namespace vorlund {

class CAppendingRos : public CResourceOsImpl<IAppendingRos> {
public:
    static constexpr CId ClassId = classid::CAppendingRos;

    CAppendingRos();
};

} // namespace vorlund
