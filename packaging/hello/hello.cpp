// How long each given sound file is. README.txt beside this file has the line that compiles it.
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

int main(int argc, char** argv) {
    try {
        const CSession session;
        std::printf("Vorlund %s\n", vorlund::GetVersion().text);
        for (const std::string& file : GetUtf8Arguments(argc, argv)) {
            const CInputStreamSelector source(PathFromUtf8(file.c_str()).c_str());
            CFrameReader sound(CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId)));
            std::printf("%s: %.2f seconds\n", file.c_str(), sound.GetSeconds());
        }
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
