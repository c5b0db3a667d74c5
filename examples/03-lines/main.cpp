// Prints a text file line by line, with line numbers.
#include <cstdio>
#include <vorlund/LineReader.h>
#include <vorlund/Path.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

int main(int argc, char** argv) {
    const wstring path = PathFromUtf8(argc > 1 ? argv[1] : "README.md");
    int number = 0;
    v.Init();
    {
        const CInputStreamSelector file(path.c_str());
        CLineReader reader(file.GetInputStreamTmp(), CHAR_FORMAT_8BIT);
        for (wstring line; reader.ReadLine(line);) {
            std::printf("%4d  ", ++number);
            for (const wchar unit : line) std::putchar(unit);
            std::putchar('\n');
        }
    }
    v.Close();
    return number > 0 ? 0 : 1;
}
