// The generator of plasma video.
#pragma once

#include "vorlund/data/sources/VideoSourceImpl.h"

#include <vorlund/ClassIds.h>
#include <vorlund/PlasmaVideoGenerator.h>

namespace vorlund {

extern const TVideoSourceFailures kPlasmaVideoGeneratorFailures;

/// Frames of plasma, each one step on.
class CPlasmaVideoGenerator : public CVideoSourceImpl<IPlasmaVideoGenerator, kPlasmaVideoGeneratorFailures> {
public:
    static constexpr CId ClassId = classid::CPlasmaVideoGenerator;

    CPlasmaVideoGenerator() : CVideoSourceImpl(400, 300, TPlace::Anywhere) {}

protected:
    ~CPlasmaVideoGenerator() = default;

private:
    void PaintFrame(void* pixels, std::uint32_t frameNumber) override;
};

} // namespace vorlund
