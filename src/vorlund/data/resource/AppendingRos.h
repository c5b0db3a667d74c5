// Writing to the end of a resource.
#pragma once

#include "vorlund/data/resource/ResourceOsImpl.h"

#include <vorlund/ClassIds.h>

namespace vorlund {

extern const TResourceOsFailures kAppendingRosFailures;

class CAppendingRos : public CResourceOsImpl<IAppendingRos, TWritePlace::End, kAppendingRosFailures> {
public:
    static constexpr CId ClassId = classid::CAppendingRos;
};

} // namespace vorlund
