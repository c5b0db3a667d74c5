// Tells which files come into a folder and go from it, as examples/09-folder-watch does, without the headers
// of comfort.
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <vorlund/ClassIds.h>
#include <vorlund/Event.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

std::set<std::string> ListFiles(const wchar* path) {
    IObject* const created = v.GetClassStore().CreateObject(classid::CFolder);
    auto* const folder = static_cast<IFolder*>(created->QueryInterface(IFolder::InterfaceId));
    created->Release();
    std::set<std::string> names;
    IObjectList* list = nullptr;
    IObjectEnumerator* enumerator = nullptr;
    try {
        folder->Initialize(path);
        list = folder->EnumerateFiles();
        enumerator = list->EnumerateObjects();
        while (IObject* const member = enumerator->GetNext()) {
            auto* const file = static_cast<IFile*>(member->QueryInterface(IFile::InterfaceId));
            member->Release();
            const CString name = file->GetName();
            file->Release();
            names.insert(PathToUtf8(name));
        }
    } catch (...) {
        if (enumerator) enumerator->Release();
        if (list) list->Release();
        folder->Release();
        throw;
    }
    enumerator->Release();
    list->Release();
    folder->Release();
    return names;
}

/// Whether the event is set, after a tenth of a second at most.
bool IsEnded(CEvent& ended) {
    try {
        ended.Wait(0.1f);
        return true;
    } catch (const CTimeoutException&) {
        return false;
    }
}

void Watch(const wchar* path, int looks) {
    // Nobody sets it here; a program with a button for the end does.
    CEvent ended;
    std::set<std::string> known;
    for (; looks > 0 && !IsEnded(ended); --looks) {
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
        v.Init();
        Watch(PathFromUtf8(argc > 1 ? argv[1] : ".").c_str(), argc > 2 ? std::atoi(argv[2]) : 2);
        v.Close();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        v.Close();
        return 1;
    }
}
