// The classes whose names hold a word, by name: with their identifiers, and whether objects can be made.
#include <iostream>
#include <map>
#include <vorlund/All.h>
using namespace vorlund;

void PrintClasses(const std::string& word) {
    std::multimap<std::string, const TClassInfo*> classes;
    for (const TClassInfo& info : EachRecord<TClassInfo>(v.GetClassStore().EnumerateClasses()))
        classes.emplace(TextToUtf8(info.name), &info);
    for (const auto& [name, info] : classes)
        if (name.find(word) != std::string::npos)
            std::cout << (info->factory ? "* " : "  ") << TextToUtf8(info->id.ToString()) << ' ' << name
                      << '\n';
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> words = GetUtf8Arguments(argc, argv);
        PrintClasses(words.empty() ? "Stream" : words[0]);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
