// Prints a text file line by line, with line numbers.
#include <cstdio>
#include <vorlund/LineReader.h>
#include <vorlund/Path.h>
#include <vorlund/Session.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Text.h>
using namespace vorlund;

int main(int argc, char** argv) {
    const CSession session;
    const CInputStreamSelector file(PathFromUtf8(argc > 1 ? argv[1] : "README.md").c_str());
    CLineReader reader(file.GetInputStreamTmp(), CHAR_FORMAT_8BIT);
    int number = 0;
    for (wstring line; reader.ReadLine(line);) std::printf("%4d  %s\n", ++number, TextToUtf8(line).c_str());
    return number > 0 ? 0 : 1;
}
