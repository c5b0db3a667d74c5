/// \file
/// The look at a file before it is loaded as a plug-in, over arbitrary bytes: it answers, and its answer fits
/// the bytes; so does the record by which a plug-in tells what it is.
#include "FuzzFolder.h"
#include "FuzzInput.h"

#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/api/plugins/PluginImage.h"
#include "vorlund/api/plugins/PluginReports.h"

#include <vorlund/Path.h>

#include <filesystem>
#include <fstream>
#include <optional>
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

    TImageLook Look(std::string_view bytes) {
        Write(bytes);
        return CImageFile(path_.c_str()).Look();
    }
    bool IsPlugin(std::string_view bytes) { return Look(bytes).kind == TImageKind::Plugin; }
    std::optional<TPluginInfoRecord> ReadInfo(std::string_view bytes) {
        Write(bytes);
        return CImageFile(path_.c_str()).ReadInfo();
    }

private:
    void Write(std::string_view bytes) const {
        std::ofstream(file_, std::ios::binary | std::ios::trunc)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    const std::filesystem::path file_ = NewPath();
    const wstring path_ = PathFromUtf8(file_.string().c_str());
};

/// A record that was found lies in the file as it is, and can be shown.
void CheckInfo(const std::optional<TPluginInfoRecord>& info, std::string_view bytes) {
    if (!info) return;
    const std::string_view record(reinterpret_cast<const char*>(&*info), sizeof(*info));
    Check(bytes.find(record) != std::string_view::npos && bytes.find(kInfoSection) != std::string_view::npos);
    CPluginReports reports;
    const std::size_t place = reports.Begin(VRL_L("file"));
    reports.SetInfo(place, *info);
    const TPluginReport report = reports.Get(place);
    for (const CString* const text : {&report.name, &report.version, &report.licence}) {
        Check(text->Length() < sizeof(info->name));
        for (const wchar* unit = text->GetBuffer(); *unit; ++unit)
            Check(*unit >= ' ' && (*unit < 0x7F || *unit > 0x9F));
    }
    IsPluginCompatible(info->libraryVersion, VORLUND_VERSION);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static CImage image;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    CheckInfo(image.ReadInfo(bytes), bytes);
    const TImageLook look = image.Look(bytes);
    // What is wanting is told.
    const bool hasDetail = look.kind == TImageKind::OtherMachine || look.kind == TImageKind::Cut ||
                           look.kind == TImageKind::OneEntry;
    Check(look.detail.empty() != hasDetail);
    if (look.kind != TImageKind::Plugin) return 0;
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
