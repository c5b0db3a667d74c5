// A module for programs of another processor, which an emulator runs: what they start is run by the emulator
// too, if it is for that processor and not one of the system's own programs. The system would do that where
// it knows the emulator (binfmt_misc), which is for the machine's administrator to say. Loaded in front of
// the standard library's function by scripts/target.sh, whose variables tell the emulator and this file.

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace {

/// What the system says of a file that is to be started: 0, or the error. The emulator loses the system's
/// answer. Tells too whether the emulator must run it.
int CheckProgram(const char* path, bool& isEmulated) {
    if (access(path, X_OK) != 0) return errno;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return errno;
    Elf64_Ehdr header{};
    const ssize_t count = read(file, &header, sizeof header);
    close(file);
    if (count < 0) return errno;
    const bool isBinary = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
    isEmulated = isBinary && header.e_machine == EM_AARCH64;
    return isBinary || std::memcmp(header.e_ident, "#!", 2) == 0 ? 0 : ENOEXEC;
}

/// The variables for a program that the emulator does not run, which cannot load what is for the others.
std::vector<char*> SystemVariables(char* const variables[]) {
    std::vector<char*> kept;
    for (; *variables; ++variables) {
        if (std::strncmp(*variables, "LD_", 3) != 0) kept.push_back(*variables);
    }
    kept.push_back(nullptr);
    return kept;
}

} // namespace

// NOLINTBEGIN(concurrency-mt-unsafe): the tests set variables between their children, in the same thread.
extern "C" [[gnu::visibility("default")]] int posix_spawn(pid_t* process, const char* path,
                                                          const posix_spawn_file_actions_t* actions,
                                                          const posix_spawnattr_t* attributes,
                                                          char* const arguments[], char* const variables[]) {
    using TFunction = decltype(&posix_spawn);
    static const auto next = reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, "posix_spawn"));
    bool isEmulated = false;
    if (const int error = CheckProgram(path, isEmulated)) return error;
    if (!isEmulated) {
        return next(process, path, actions, attributes, arguments, SystemVariables(variables).data());
    }

    // A test that lets the child load something else leaves this file out, and the child may start children.
    const char* const loaded = std::getenv("LD_PRELOAD");
    const char* const own = std::getenv("VORLUND_EMULATED_START");
    std::string modules = std::string("LD_PRELOAD=") + (loaded ? loaded : "");
    if (modules.find(own) == std::string::npos) modules += std::string(loaded ? ":" : "") + own;
    const char* const emulator = std::getenv("VORLUND_EMULATOR");
    std::vector<char*> words;
    const char* const first[] = {emulator, "-E", modules.c_str(), "-0", arguments[0], path};
    for (const char* const word : first) words.push_back(const_cast<char*>(word));
    for (char* const* argument = arguments + 1; *argument; ++argument) words.push_back(*argument);
    words.push_back(nullptr);
    return next(process, emulator, actions, attributes, words.data(), variables);
}
// NOLINTEND(concurrency-mt-unsafe)
