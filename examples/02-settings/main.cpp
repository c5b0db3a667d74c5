// Keeps settings in a file: a record is written value by value and read back in the same order.
#include <cstdio>
#include <filesystem>
#include <vorlund/Session.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Text.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>
using namespace vorlund;

struct TSettings {
    CString device = VRL_L("Speakers");
    int width = 1280, height = 720;
    float volume = 0.75f;
    bool fullScreen = false;
};

CVarWriter& operator<<(CVarWriter& writer, const TSettings& settings) {
    return writer << settings.device << settings.width << settings.height << settings.volume
                  << settings.fullScreen;
}

CVarReader& operator>>(CVarReader& reader, TSettings& settings) {
    return reader >> settings.device >> settings.width >> settings.height >> settings.volume >>
           settings.fullScreen;
}

int main() {
    const auto file = std::filesystem::temp_directory_path() / "vorlund-example-settings";
    const auto units = file.u16string();
    const wstring path(units.begin(), units.end());
    TSettings settings, restored;
    settings.device = VRL_L("Headphones");
    settings.fullScreen = true;
    const CSession session;
    {
        CVarWriter writer(COutputStreamSelector(path.c_str()).GetOutputStreamTmp());
        writer << settings;
    }
    {
        CVarReader reader(CInputStreamSelector(path.c_str()).GetInputStreamTmp());
        reader >> restored;
    }
    std::filesystem::remove(file);
    std::printf("%s, %d x %d, volume %.2f%s\n", ToUtf8(restored.device).c_str(), restored.width,
                restored.height, restored.volume, restored.fullScreen ? ", full screen" : "");
    return restored.device == settings.device && restored.fullScreen ? 0 : 1;
}
