/// \file
/// Stands in for libFuzzer where it does not exist: feeds every file of the folders given, in the order of
/// their names, to the fuzz target. A finding ends the program as it would end the fuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            if (entry.is_regular_file()) inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    for (const auto& input : inputs) {
        // Named before it runs, so that the last line before a crash tells which input it was.
        std::printf("%s\n", input.filename().string().c_str());
        std::fflush(stdout);
        // An exact copy on the heap lets the address sanitizer see a read past the end.
        const std::vector<std::uint8_t> bytes = ReadFile(input);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
