// The default output filter.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/StreamFilterImpl.h>

namespace vorlund {

/// An output filter that hands on what is written to it.
class COutputStreamFilter : public COutputFilterImpl<IOutputStreamFilter> {
public:
    static constexpr CId ClassId = classid::COutputStreamFilter;
};

} // namespace vorlund
