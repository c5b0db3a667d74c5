// The default input stream.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

/// An input stream that has nothing but the defaults.
class CInputStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId = classid::CInputStream;
};

} // namespace vorlund
