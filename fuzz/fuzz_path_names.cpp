/// \file
/// Names of files and folders: paths between UTF-16 and UTF-8, and a file of any name that is written, listed
/// and read again. The first byte of an input tells whether the others are UTF-8 or units of UTF-16.
#include "FuzzFolder.h"
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

using namespace vorlund;
using namespace vorlund::fuzz;
namespace fs = std::filesystem;

namespace {

/// Systems take names of 255 bytes, and a unit has up to three.
constexpr std::size_t kMaxName = 80;

/// A new empty folder, removed at the end.
class CPlace {
public:
    CPlace() : folder_(NewPath()) { fs::create_directory(folder_); }
    CPlace(const CPlace&) = delete;
    CPlace& operator=(const CPlace&) = delete;
    ~CPlace() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    /// With "/" at the end.
    wstring GetPath() const {
        const std::u8string text = folder_.generic_u8string() + u8"/";
        return PathFromUtf8(reinterpret_cast<const char*>(text.c_str()));
    }
    void RemoveTheFile() const { Check(fs::remove(*fs::directory_iterator(folder_))); }
    bool IsEmpty() const { return fs::is_empty(folder_); }

private:
    const fs::path folder_;
};

/// The text of an input, up to the first unit 0.
wstring TakeText(CInput input) {
    const bool isUtf8 = input.Byte() % 2 == 0;
    std::string bytes;
    wstring units;
    while (!input.IsEmpty()) {
        const unsigned int low = input.Byte();
        if (isUtf8) {
            bytes += static_cast<char>(low);
        } else {
            units += static_cast<wchar>(low | unsigned{input.Byte()} << 8);
        }
    }
    return isUtf8 ? PathFromUtf8(bytes.c_str()) : wstring(units.c_str());
}

/// What has been through both conversions stays as it is.
void CheckConversions(const wstring& text) {
    const std::string bytes = PathToUtf8(text.c_str());
    const wstring again = PathFromUtf8(bytes.c_str());
    Check(PathToUtf8(again.c_str()) == bytes);
    Check(PathFromUtf8(PathToUtf8(again.c_str()).c_str()) == again);
}

/// A name that every system takes, if it takes the characters: no separators, no devices, nothing that is cut
/// off at the end.
wstring MakeName(const wstring& text) {
    constexpr std::basic_string_view<wchar> kSpecial = VRL_L("/\\:*?\"<>|");
    wstring name = VRL_L("n");
    for (const wchar unit : text.substr(0, kMaxName)) {
        if (unit >= VRL_L(' ') && kSpecial.find(unit) == kSpecial.npos) name += unit;
    }
    return name + VRL_L('n');
}

/// The parts of a path make up the whole.
void CheckParts(IFile& file, const wstring& folder, const wstring& name) {
    const wstring path = file.GetPath().GetBuffer();
    Check(path == folder + name);
    Check(wstring(file.GetFolderPath().GetBuffer()) == folder);
    Check(wstring(file.GetName().GetBuffer()) == name);
    const wstring title = file.GetTitle().GetBuffer();
    const wstring extension = file.GetExtension().GetBuffer();
    const bool hasDot = name.find(VRL_L('.')) != wstring::npos;
    Check(name == (hasDot ? title + VRL_L('.') + extension : title));
}

/// Whether a file of that name can be made.
bool Write(const wstring& path) {
    try {
        const COutputStreamSelector target(path.c_str());
        target.GetOutputStreamTmp()->Write("x", 1);
        return true;
    } catch (const CFileAccessException&) {
        return false;
    }
}

std::uint64_t ReadOnce(IInputStream& stream) {
    char bytes[8];
    return stream.Read(bytes, sizeof bytes);
}

/// What was written under a name is listed and read under that name, by every way to a file.
void CheckFile(const CPlace& place, const wstring& name) {
    const wstring folderPath = place.GetPath();
    const wstring path = folderPath + name;
    if (!Write(path)) {
        Check(place.IsEmpty());
        return;
    }
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(folderPath.c_str());
    const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    Check(files->GetObjectCount() == 1);
    const auto listed = CRefPtr<IObject>::Adopt(files->GetObject(0)).Query<IFile>();
    CheckParts(*listed, folderPath, listed->GetName().GetBuffer());
    Check(ReadOnce(*CRefPtr<IFileInputStream>::Adopt(listed->OpenInputStream())) == 1);

    const auto given = CreateAs<IFile>(classid::CFile);
    given->Initialize(path.c_str());
    CheckParts(*given, folderPath, name);
    Check(PathToUtf8(listed->GetPath().GetBuffer()) == PathToUtf8(path.c_str()));
    Check(ReadOnce(*CInputStreamSelector(path.c_str()).GetInputStreamTmp()) == 1);
    given->OpenOutputStream()->Release();
    Check(ReadOnce(*CInputStreamSelector(path.c_str()).GetInputStreamTmp()) == 0);
    place.RemoveTheFile();
}

/// A path as it came names something or raises. It begins with a name that is not there, so it leads nowhere.
void CheckPath(const CPlace& place, const wstring& text) {
    const wstring path = place.GetPath() + VRL_L("none") + text;
    const auto file = CreateAs<IFile>(classid::CFile);
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    try {
        file->Initialize(path.c_str());
    } catch (const CFileAccessException&) {
        Check(*file->GetPath().GetBuffer() == 0);
    }
    try {
        folder->Initialize(path.c_str());
        Check(wstring(folder->GetPath().GetBuffer()).ends_with(VRL_L('/')));
    } catch (const CFileAccessException&) {
        Check(*folder->GetPath().GetBuffer() == 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    static const CPlace place;
    const wstring text = TakeText(CInput(data, size));
    CheckConversions(text);
    CheckFile(place, MakeName(text));
    CheckPath(place, text);
    return 0;
}
