#include "vorlund/data/sources/PlasmaVideoGenerator.h"

#include "vorlund/data/sources/PlasmaPainter.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/PlasmaVideoGenerator");
constexpr const wchar* kRead = VRL_L("vorlund::CPlasmaVideoGenerator::Read");
constexpr const wchar* kSetFormat = VRL_L("vorlund::CPlasmaVideoGenerator::SetFormat");

} // namespace

constexpr TVideoSourceFailures kPlasmaVideoGeneratorFailures{
    {{VRL_L("vorlund::CPlasmaVideoGenerator::Seek"), kFile, 135, VRL_L("Seek is not supported")},
     {VRL_L("vorlund::CPlasmaVideoGenerator::Tell"), kFile, 139, VRL_L("Tell is not supported")},
     {VRL_L("vorlund::CPlasmaVideoGenerator::GetLength"), kFile, 147, VRL_L("GetLength is not supported")},
     {kRead, kFile, 152, VRL_L("buffer is NULL")},
     {kRead, kFile, 170, VRL_L("sample is NULL")},
     {kRead, kFile, 171, VRL_L("Media samples are not supported")}},
    {kSetFormat, kFile, 180, VRL_L("format is NULL")},
    {kSetFormat, kFile, 181, VRL_L("Unsupported format ID")}};

void CPlasmaVideoGenerator::PaintFrame(void* pixels, std::uint32_t frameNumber) {
    PaintPlasma(pixels, format_.image.width, format_.image.height, frameNumber);
}

} // namespace vorlund
