// Tells which files come into a folder and go from it: the first argument, looked at as often as the second
// says, ten times a second.
#include <iostream>
#include <set>
#include <vorlund/All.h>
using namespace vorlund;
using namespace std::chrono_literals;

std::set<std::string> ListFiles(const std::string& path) {
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(PathFromUtf8(path.c_str()).c_str());
    std::set<std::string> names;
    for (const CRefPtr<IFile>& file : Each<IFile>(folder->EnumerateFiles()))
        names.insert(PathToUtf8(file->GetName()));
    return names;
}

void Watch(const std::string& path, int looks) {
    // Nobody sets it here; a program with a button for the end does.
    const CEvent ended;
    std::set<std::string> known;
    for (; looks > 0 && !WaitFor(ended, 100ms); --looks) {
        std::set<std::string> present = ListFiles(path);
        for (const std::string& name : present)
            if (!known.contains(name)) std::cout << "+ " << name << std::endl;
        for (const std::string& name : known)
            if (!present.contains(name)) std::cout << "- " << name << std::endl;
        known.swap(present);
    }
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> words = GetUtf8Arguments(argc, argv);
        Watch(words.empty() ? "." : words[0], words.size() > 1 ? std::stoi(words[1]) : 2);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
