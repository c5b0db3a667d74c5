#include "Decoding.h"

#include "Diagnostics.h"

#include <vorlund/IsolatedDecoder.h>
#include <vorlund/Path.h>
#include <vorlund/StreamErrors.h>

#include <optional>
#include <system_error>
#include <utility>

using namespace vorlund;

namespace {

struct TApart {
    std::vector<wstring> folders;
    bool areOthersForgotten;
};

std::optional<TApart> apart;

} // namespace

void IsolateDecoders(const std::vector<std::string>& folders, bool areOthersForgotten) {
    std::vector<wstring> paths;
    paths.reserve(folders.size());
    for (const std::string& folder : folders) paths.push_back(PathFromUtf8(folder.c_str()));
    apart = TApart{std::move(paths), areOthersForgotten};
}

CRefPtr<IInputStream> DecodeSource(const CInputStreamSelector& source, const CId& format,
                                   CDecodeReport& report) {
    if (!apart) return CRefPtr<IInputStream>::Adopt(source.DecodeStream(format, {.report = &report}));
    std::vector<const wchar*> folders;
    folders.reserve(apart->folders.size());
    for (const wstring& folder : apart->folders) folders.push_back(folder.c_str());
    return CRefPtr<IInputStream>::Adopt(
        DecodeIsolated(source.GetInputStreamTmp(), format,
                       {.folders = folders, .withInstalled = !apart->areOthersForgotten, .report = &report}));
}

void CheckReading(IInputStream& stream, const wstring& path) {
    const std::uint32_t error = GetReadError(stream);
    if (error == 0) return;
    const std::string reason = std::system_category().message(static_cast<int>(error));
    throw TProgramError{VRL_L("Cannot read '") + path + VRL_L("': ") + PathFromUtf8(reason.c_str())};
}
