// The default input filter.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/StreamFilterImpl.h>

namespace vorlund {

/// An input filter that hands on what it reads.
class CInputStreamFilter : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId = classid::CInputStreamFilter;
};

} // namespace vorlund
