// The child program of the tests of killed recordings: writes a WAV file until it is killed. Each frame holds
// its number and when it was written, in milliseconds.
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavWriter.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

using namespace vorlund;

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    v.Init();
    CWavWriter writer(PathFromUtf8(argv[1]).c_str(), {WAV_SAMPLE_32BIT, 2, 48000});
    const auto begin = std::chrono::steady_clock::now();
    std::vector<std::uint32_t> block(1000);
    for (std::uint32_t frame = 0;;) {
        const auto now =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
        // Nobody kills it: it has been forgotten.
        if (now > std::chrono::minutes(2)) return 1;
        for (std::size_t i = 0; i < block.size(); i += 2) {
            block[i] = frame++;
            block[i + 1] = static_cast<std::uint32_t>(now.count());
        }
        writer.Write(block.data(), block.size() * sizeof block[0]);
        // The pace of a recording, so that the disk does not fill.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
