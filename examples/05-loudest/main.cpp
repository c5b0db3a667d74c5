// How loud the loudest sample of each given file is.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

float Loudest(const wchar* path) {
    const CInputStreamSelector source(path);
    CFrameReader sound(CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId)));
    float loudest = 0;
    for (const float sample : sound.ReadRest()) loudest = std::max(loudest, std::abs(sample));
    return loudest;
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        if (files.empty()) files = {"strings.wav"};
        for (const std::string& file : files)
            std::printf("%s: %.1f dB\n", file.c_str(),
                        ToDecibels(Loudest(PathFromUtf8(file.c_str()).c_str())));
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
