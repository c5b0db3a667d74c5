#include "Terminal.h"

#include <cerrno>
#include <cwchar>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

void PrepareStandardStreams() {
    // Each open takes the lowest number that is free. The wrong direction refuses what a closed one refuses.
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        if (fcntl(file, F_GETFD) < 0 && errno == EBADF)
            open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
    // Lines for a stream of bytes go through it, and others past it, where nothing would be marked.
    std::fwide(stdout, -1);
}

bool IsErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

int GetErrorColumns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::FILE* GetBinaryInput() {
    return stdin;
}

std::FILE* GetBinaryOutput() {
    return stdout;
}
