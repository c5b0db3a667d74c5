// The default output stream.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

/// An output stream that has nothing but the defaults.
class COutputStream : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId = classid::COutputStream;
};

} // namespace vorlund
