// The chunks of a WAV file: names, places and sizes.
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

void PrintChunks(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    chunks->Connect(file.GetInputStreamTmp());
    for (const CRefPtr<IStringObject>& id : Each<IStringObject>(chunks->EnumerateChunks())) {
        chunks->SelectChunk(id->GetString());
        std::printf("%-4s at %6lld, %6llu bytes\n", ToUtf8(id->GetString()).c_str(),
                    static_cast<long long>(chunks->GetChunkOffset()),
                    static_cast<unsigned long long>(chunks->GetChunkSize()));
    }
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        PrintChunks(files.empty() ? "strings.wav" : files[0]);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
