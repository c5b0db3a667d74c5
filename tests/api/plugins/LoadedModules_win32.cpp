#include "api/plugins/LoadedModules.h"

#include "support/EndProcess.h"

#include <cstring>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace vorlund::test {

const char* const kProgramEnding = ".exe";
// Wine takes about a hundred times as long to start a process.
const std::size_t kScanStep = 512;
const char* const kPluginEnding = ".dll";

std::size_t GetHeaderSize(const std::string& image) {
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, image.data(), sizeof(dos));
    const std::size_t at = static_cast<std::size_t>(dos.e_lfanew);
    IMAGE_NT_HEADERS headers;
    std::memcpy(&headers, image.data() + at, sizeof(headers));
    return at + sizeof(headers) + headers.FileHeader.NumberOfSections * sizeof(IMAGE_SECTION_HEADER);
}

static LONG WINAPI OnFault(EXCEPTION_POINTERS*) {
    EndProcess(5);
}

void EndProcessAtFaults() {
    SetUnhandledExceptionFilter(&OnFault);
}

bool IsInProcess(const std::filesystem::path& file) {
    std::filesystem::path path = file;
    return GetModuleHandleW(path.make_preferred().c_str()) != nullptr;
}

void SetEnvironment(const char* name, const char* value) {
    // The system's environment, which the loader reads, not the copy of the C runtime.
    SetEnvironmentVariableA(name, value);
}

} // namespace vorlund::test
