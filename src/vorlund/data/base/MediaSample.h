// The empty media sample.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// A sample without data, which reads and writes nothing.
class CMediaSample : public CObjectImpl<IMediaSample> {
public:
    static constexpr CId ClassId = classid::CMediaSample;

    IMediaSample* Clone() override;
    std::uint32_t GetSampleFlags() override { return 0; }
    bool ReadFrom(const CInputStreamSelector&) override { return false; }
    void WriteTo(const COutputStreamSelector&) override {}
};

} // namespace vorlund
