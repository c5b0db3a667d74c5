/// \file
/// The look at a file before it is loaded as a plug-in, over arbitrary bytes: it answers, and its answer fits
/// the bytes.
#include "FuzzFolder.h"
#include "FuzzInput.h"

#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/api/plugins/PluginImage.h"

#include <vorlund/Path.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

using namespace vorlund;
using vorlund::fuzz::Check;
using vorlund::fuzz::NewPath;

/// The file that each input is written to.
class CImage {
public:
    CImage() = default;
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;
    ~CImage() {
        std::error_code ignored;
        std::filesystem::remove(file_, ignored);
    }

    bool IsPlugin(std::string_view bytes) {
        std::ofstream(file_, std::ios::binary | std::ios::trunc)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return CImageFile(path_.c_str()).IsPlugin();
    }

private:
    const std::filesystem::path file_ = NewPath();
    const wstring path_ = PathFromUtf8(file_.string().c_str());
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static CImage image;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (!image.IsPlugin(bytes)) return 0;
    const auto has = [&bytes](const char* name) { return bytes.find(name) != std::string::npos; };
    Check(has(kInitEntryName.symbol) && has(kCloseEntryName.symbol));
    // Tables for others may follow what is loaded.
    Check(image.IsPlugin(bytes + 'x'));
    // Whatever is missing, the headers told of it.
    for (const std::size_t length : {size / 2, size / 4 * 3, size - 1}) {
        if (image.IsPlugin(bytes.substr(0, length))) Check(bytes.find(kCloseEntryName.symbol) < length);
    }
    return 0;
}
