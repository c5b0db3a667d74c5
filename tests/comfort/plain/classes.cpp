// The classes whose names hold a word, as examples/08-classes lists them, without the headers of comfort.
#include <iostream>
#include <map>
#include <string>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/Plugin.h>
#include <vorlund/PtrObject.h>
#include <vorlund/String.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

/// Names and identifiers of the library are ASCII.
std::string Narrow(const CString& text) {
    std::string narrow(text.Length() + 1, '\0');
    text.ToChar(narrow.data(), static_cast<int>(narrow.size()));
    narrow.resize(text.Length());
    return narrow;
}

void PrintClasses(const std::string& word) {
    std::multimap<std::string, const TClassInfo*> classes;
    IObjectEnumerator* const enumerator = v.GetClassStore().EnumerateClasses();
    try {
        while (IObject* const member = enumerator->GetNext()) {
            auto* const pointer = static_cast<IPtrObject*>(member->QueryInterface(IPtrObject::InterfaceId));
            member->Release();
            if (!pointer) continue;
            const auto* const info = static_cast<const TClassInfo*>(pointer->GetPtr());
            pointer->Release();
            classes.emplace(Narrow(info->name), info);
        }
    } catch (...) {
        enumerator->Release();
        throw;
    }
    enumerator->Release();
    for (const auto& [name, info] : classes)
        if (name.find(word) != std::string::npos)
            std::cout << (info->factory ? "* " : "  ") << Narrow(info->id.ToString().c_str()) << ' ' << name
                      << '\n';
}

int main(int argc, char** argv) {
    try {
        v.Init();
        PrintClasses(argc > 1 ? argv[1] : "Stream");
        v.Close();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        v.Close();
        return 1;
    }
}
