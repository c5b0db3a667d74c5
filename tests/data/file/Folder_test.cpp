// Folders and their entries.
#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/DebugRecorder.h"
#include "support/Probes.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <functional>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

using TNames = std::vector<std::string>;

/// The names of the members of a list, which is released.
template <class TEntry> TNames TakeNames(IObjectList* list) {
    const auto owned = CRefPtr<IObjectList>::Adopt(list);
    TNames names;
    for (unsigned int i = 0; i < owned->GetObjectCount(); ++i) {
        const auto object = CRefPtr<IObject>::Adopt(owned->GetObject(i));
        const auto entry = object.template Query<TEntry>();
        names.push_back(entry ? Narrow(entry->GetName()) : "not of this kind");
    }
    return names;
}

TNames Sorted(TNames names) {
    std::sort(names.begin(), names.end());
    return names;
}

class Folder : public CFileTest {
protected:
    CRefPtr<IFolder> NewFolder() const { return CreateAs<IFolder>(classid::CFolder); }
    CRefPtr<IFolder> NewFolder(const wstring& path) const {
        auto folder = NewFolder();
        folder->Initialize(path.c_str());
        return folder;
    }
    CRefPtr<IFolder> Here() const { return NewFolder(ToVorlund(folder_.GetPath())); }
    TNames Files() const { return TakeNames<IFile>(Here()->EnumerateFiles()); }
    TNames Folders() const { return TakeNames<IFolder>(Here()->EnumerateFolders()); }
};

TEST_F(Folder, Identity) {
    const auto folder = NewFolder();
    EXPECT_EQ(folder->GetClassId(), CId(0x60E82CA0, 0x89794B06, 0x90E37D7E, 0x529AB2EB));
    EXPECT_TRUE(folder.Query<IFolder>());
    EXPECT_TRUE(folder.Query<IObject>());
    EXPECT_FALSE(folder.Query<IFile>());
    EXPECT_FALSE(folder.Query<IStream>());
}

TEST_F(Folder, UninitialisedHasNoNameAndNoEntries) {
    const auto folder = NewFolder();
    EXPECT_EQ(Narrow(folder->GetPath()), "");
    EXPECT_EQ(Narrow(folder->GetName()), "");
    EXPECT_EQ(TakeNames<IFile>(folder->EnumerateFiles()), TNames());
    EXPECT_EQ(TakeNames<IFolder>(folder->EnumerateFolders()), TNames());
}

struct TPathRow {
    const char* test;
    /// Relative to the working folder, as given to `Initialize`.
    const wchar* given;
    const char* path;
    const char* name;
};

class FolderPaths : public Folder, public testing::WithParamInterface<TPathRow> {};

TEST_P(FolderPaths, EndInASlash) {
    const TPathRow& row = GetParam();
    fs::create_directories(At("music/new.songs"));
    const CWorkingFolder here(folder_.GetPath());
    const auto folder = NewFolder(row.given);
    EXPECT_EQ(Narrow(folder->GetPath()), row.path);
    EXPECT_EQ(Narrow(folder->GetName()), row.name);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FolderPaths,
    testing::Values(TPathRow{"Plain", VRL_L("music"), "music/", "music"},
                    TPathRow{"WithSlash", VRL_L("music/"), "music/", "music"},
                    TPathRow{"WithBackslash", VRL_L("music\\"), "music/", "music"},
                    TPathRow{"Backslashes", VRL_L("music\\new.songs"), "music/new.songs/", "new.songs"},
                    TPathRow{"Mixed", VRL_L(".\\music/new.songs\\"), "./music/new.songs/", "new.songs"},
                    TPathRow{"Here", VRL_L("."), "./", "."},
                    TPathRow{"Parent", VRL_L("music/.."), "music/../", ".."},
                    TPathRow{"TwoSlashes", VRL_L("music//"), "music//", ""}),
    [](const auto& row) { return row.param.test; });

TEST_F(Folder, AbsolutePath) {
    const wstring path = ToVorlund(folder_.GetPath());
    const auto folder = NewFolder(WithBackslashes(path));
    EXPECT_EQ(Narrow(folder->GetPath()), Narrow(path + VRL_L('/')));
    EXPECT_EQ(Narrow(folder->GetName()), folder_.GetPath().filename().string());
}

TEST_F(Folder, InitializeRaisesForWhatIsMissing) {
    const auto folder = NewFolder();
    for (const fs::path name : {"missing", "missing/", "no/such/folder"}) {
        const wstring path = ToVorlund(At(name));
        ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFolder,
                                              [&] { folder->Initialize(path.c_str()); });
    }
    const wstring backslashes = WithBackslashes(ToVorlund(At("missing")));
    ExpectRaisesFor<CFileAccessException>(backslashes, filefailures::kNoFolder,
                                          [&] { folder->Initialize(backslashes.c_str()); });
    ExpectRaisesFor<CFileAccessException>(VRL_L(""), filefailures::kNoFolder,
                                          [&] { folder->Initialize(VRL_L("")); });
    ExpectRaisesFor<CFileAccessException>(VRL_L("(null)"), filefailures::kNoFolder,
                                          [&] { folder->Initialize(nullptr); });
    EXPECT_EQ(Narrow(folder->GetPath()), "");
}

TEST_F(Folder, InitializeRaisesForAFile) {
    const wstring path = ToVorlund(Put("song.wav"));
    const auto folder = NewFolder();
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kFolderIsNoDirectory,
                                          [&] { folder->Initialize(path.c_str()); });
    const wstring asFolder = path + VRL_L('/');
    ExpectRaisesFor<CFileAccessException>(asFolder, filefailures::kNoFolder,
                                          [&] { folder->Initialize(asFolder.c_str()); });
    EXPECT_EQ(Narrow(folder->GetPath()), "");
}

TEST_F(Folder, SecondInitializeIsIgnored) {
    fs::create_directory(At("first"));
    fs::create_directory(At("second"));
    const auto folder = NewFolder(ToVorlund(At("first")));
    folder->Initialize(ToVorlund(At("second")).c_str());
    folder->Initialize(ToVorlund(At("missing")).c_str());
    folder->Initialize(nullptr);
    EXPECT_EQ(Narrow(folder->GetName()), "first");
}

TEST_F(Folder, InitializesAfterAFailure) {
    const auto folder = NewFolder();
    const wstring path = ToVorlund(At("late"));
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFolder,
                                          [&] { folder->Initialize(path.c_str()); });
    fs::create_directory(At("late"));
    folder->Initialize(path.c_str());
    EXPECT_EQ(Narrow(folder->GetName()), "late");
}

TEST_F(Folder, EnumerateFoldersListsDotAndDotDot) {
    EXPECT_EQ(Sorted(Folders()), (TNames{".", ".."}));
    fs::create_directory(At("sub"));
    fs::create_directory(At(".hidden"));
    Put("song.wav");
    EXPECT_EQ(Sorted(Folders()), (TNames{".", "..", ".hidden", "sub"}));
}

TEST_F(Folder, EnumerateFilesListsWhatIsNoDirectory) {
    EXPECT_EQ(Files(), TNames());
    for (const char* const name : {"song.wav", "README", ".profile", "a b", "sub/below.wav"}) Put(name);
    EXPECT_EQ(Sorted(Files()), (TNames{".profile", "README", "a b", "song.wav"}));
}

TEST_F(Folder, EntriesComeInTheOrderOfTheSystem) {
    TNames files, folders;
    for (int i = 0; i < 40; ++i) {
        // Neither sorted nor in the order of creation on most systems.
        Put(std::to_string(i * 7919 % 1000) + ".wav");
        fs::create_directory(At("sub" + std::to_string(i * 104729 % 1000)));
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_.GetPath()))
        (entry.is_directory() ? folders : files).push_back(entry.path().filename().string());
    ASSERT_EQ(files.size(), 40u);
    EXPECT_EQ(Files(), files);
    TNames ours = Folders();
    std::erase(ours, ".");
    std::erase(ours, "..");
    EXPECT_EQ(ours, folders);
}

TEST_F(Folder, EntriesAreInitialisedWithTheWholePath) {
    Put("sub/song.wav", "sound");
    const auto sub = NewFolder(ToVorlund(At("sub")));
    const auto files = CRefPtr<IObjectList>::Adopt(sub->EnumerateFiles());
    ASSERT_EQ(files->GetObjectCount(), 1u);
    const auto file = CRefPtr<IObject>::Adopt(files->GetObject(0)).Query<IFile>();
    EXPECT_EQ(Narrow(file->GetPath()), Narrow(ToVorlund(At("sub/song.wav"))));
    EXPECT_EQ(file->GetClassId(), classid::CFile);
    const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
    EXPECT_EQ(stream->GetLength(), 5);

    const auto folders = CRefPtr<IObjectList>::Adopt(sub->EnumerateFolders());
    for (unsigned int i = 0; i < folders->GetObjectCount(); ++i) {
        const auto folder = CRefPtr<IObject>::Adopt(folders->GetObject(i)).Query<IFolder>();
        EXPECT_EQ(folder->GetClassId(), classid::CFolder);
        const std::string name = Narrow(folder->GetName());
        EXPECT_EQ(Narrow(folder->GetPath()), Narrow(ToVorlund(At("sub"))) + '/' + name + '/');
        if (name == "..") {
            EXPECT_EQ(Sorted(TakeNames<IFolder>(folder->EnumerateFolders())), (TNames{".", "..", "sub"}));
        }
    }
}

TEST_F(Folder, ListHoldsTheOnlyReferences) {
    Put("song.wav");
    const auto list = CRefPtr<IObjectList>::Adopt(Here()->EnumerateFiles());
    EXPECT_EQ(list->GetClassId(), classid::CObjectList);
    EXPECT_EQ(ReferencesOf(list.Get()), 1);
    const auto file = CRefPtr<IObject>::Adopt(list->GetObject(0));
    EXPECT_EQ(ReferencesOf(file.Get()), 2);
}

TEST_F(Folder, ServicesAreMadeByTheClassStore) {
    Put("song.wav");
    Put("other.wav");
    const auto folder = Here();
    const auto list = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    EXPECT_EQ(list->GetObjectNumber(), folder->GetObjectNumber() + 1);
    ASSERT_EQ(list->GetObjectCount(), 2u);
    for (int i = 0; i < 2; ++i) {
        const auto file = CRefPtr<IObject>::Adopt(list->GetObject(static_cast<unsigned int>(i)));
        EXPECT_EQ(file->GetObjectNumber(), list->GetObjectNumber() + 1 + i);
    }
}

TEST_F(Folder, EachEnumerationLooksAgain) {
    const auto folder = Here();
    EXPECT_EQ(TakeNames<IFile>(folder->EnumerateFiles()), TNames());
    Put("late.wav");
    EXPECT_EQ(TakeNames<IFile>(folder->EnumerateFiles()), TNames{"late.wav"});
}

TEST_F(Folder, FolderThatIsGoneHasNoEntries) {
    fs::create_directory(At("sub"));
    const auto folder = NewFolder(ToVorlund(At("sub")));
    fs::remove(At("sub"));
    CDebugRecorder recorder;
    EXPECT_EQ(TakeNames<IFile>(folder->EnumerateFiles()), TNames());
    EXPECT_EQ(TakeNames<IFolder>(folder->EnumerateFolders()), TNames());
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(Folder, NamesBeyondTheAnsiCodePageSurviveEnumerateAndOpen) {
    const std::vector<const wchar*> names = {VRL_L("\u00E9t\u00E9.wav"),
                                             VRL_L("\u03B1\u0416\u05D0\u0E01.wav"), VRL_L("\u6B4C\u66F2"),
                                             VRL_L("\U0001D11E\U0001F3B5.wav")};
    for (const wchar* const folderName : names) {
        for (const wchar* const name : names) Put(ToPath(folderName) / ToPath(name), PathToUtf8(name));
    }
    TNames expected;
    for (const wchar* const name : names) expected.push_back(PathToUtf8(name));
    expected = Sorted(expected);
    int seen = 0;
    const auto folders = CRefPtr<IObjectList>::Adopt(Here()->EnumerateFolders());
    for (unsigned int i = 0; i < folders->GetObjectCount(); ++i) {
        const auto folder = CRefPtr<IObject>::Adopt(folders->GetObject(i)).Query<IFolder>();
        if (Narrow(folder->GetName()).starts_with(".")) continue;
        ++seen;
        EXPECT_EQ(Sorted(TakeNames<IFile>(folder->EnumerateFiles())), expected);
        const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
        for (unsigned int k = 0; k < files->GetObjectCount(); ++k) {
            const auto file = CRefPtr<IObject>::Adopt(files->GetObject(k)).Query<IFile>();
            const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
            char bytes[100];
            const std::uint64_t size = stream->Read(bytes, sizeof(bytes));
            EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(size)), Narrow(file->GetName()));
        }
    }
    EXPECT_EQ(seen, 4);
}

/// A file whose `Initialize` does what the test wants.
class CTrickyFile : public CObjectImpl<IFile> {
public:
    static constexpr CId ClassId = classid::CFile;
    static inline std::function<void(const wchar*)> onInitialize;
    static inline int alive = 0;

    CString GetTitle() override { return {}; }
    CString GetFolderPath() override { return {}; }
    CString GetExtension() override { return {}; }
    IFolder* GetFolder() override { return nullptr; }
    CString GetName() override { return VRL_L("tricky"); }
    CString GetPath() override { return {}; }
    IFile* Initialize(const wchar* path) override {
        onInitialize(path);
        return this;
    }
    IFileInputStream* OpenInputStream() override { return nullptr; }
    IFileOutputStream* OpenOutputStream() override { return nullptr; }

protected:
    CTrickyFile() { ++alive; }
    ~CTrickyFile() { --alive; }
};

constexpr TFailure kNotThere{VRL_L("test::CTrickyFile::Initialize"), VRL_L("tests/file/Folder_test"), 1,
                             VRL_L("Not there")};

class FolderThatChanges : public Folder {
protected:
    ~FolderThatChanges() noexcept override = default;

    /// Files of the folder are tricky from now on.
    void Trick(std::function<void(const fs::path&)> onInitialize) {
        CTrickyFile::onInitialize = [onInitialize](const wchar* path) { onInitialize(ToPath(path)); };
        const TClassInfo list = *v.GetClassStore().GetClassInfo(classid::CObjectList);
        v.GetClassStore().Clear();
        v.GetClassStore().RegisterClassVrl(list);
        v.GetClassStore().RegisterClassVrl(
            {classid::CFile, VRL_L("test::CTrickyFile"), &NewObject<CTrickyFile>});
    }

    CRefPtr<IFolder> here_ = Here();
};

TEST_F(FolderThatChanges, ReplacedClassIsUsed) {
    Put("a");
    Trick([](const fs::path&) {});
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), TNames{"tricky"});
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, EntriesGoneBeforeTheyAreAskedForAreLeftOutInSilence) {
    for (int i = 0; i < 50; ++i) Put(std::to_string(i));
    // The first one takes all others away.
    Trick([&](const fs::path& path) {
        for (const fs::path& other : fs::directory_iterator(folder_.GetPath())) {
            if (other.filename() != path.filename()) fs::remove(other);
        }
    });
    CDebugRecorder recorder;
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), TNames{"tricky"});
    EXPECT_TRUE(recorder.GetEntries().empty());
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, EntryThatVanishesWhileItIsInitialisedIsLeftOut) {
    for (const char* const name : {"a", "b", "c"}) Put(name);
    Trick([](const fs::path& path) {
        if (path.filename() != "b") return;
        fs::remove(path);
        Raise<CFileAccessException>(kNotThere);
    });
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), (TNames{"tricky", "tricky"}));
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, FileThatBecomesADirectoryIsLeftOut) {
    for (const char* const name : {"a", "b", "c"}) Put(name);
    Trick([](const fs::path& path) {
        if (path.filename() != "b") return;
        fs::remove(path);
        fs::create_directory(path);
        Raise<CFileAccessException>(kNotThere);
    });
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), (TNames{"tricky", "tricky"}));
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, EntryThatVanishesAndReturnsIsAskedForAgain) {
    for (const char* const name : {"a", "b", "c"}) Put(name);
    bool isFirst = true;
    Trick([&](const fs::path& path) {
        // There before and afterwards, only not in between.
        if (path.filename() == "b" && std::exchange(isFirst, false)) Raise<CFileAccessException>(kNotThere);
    });
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), (TNames{"tricky", "tricky", "tricky"}));
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, EntryThatCannotBeReachedLosesNoOther) {
    for (const char* const name : {"a", "b", "c"}) Put(name);
    int count = 0;
    Trick([&](const fs::path& path) {
        if (path.filename() != "b") return;
        ++count;
        Raise<CFileAccessException>(kNotThere);
    });
    EXPECT_EQ(TakeNames<IFile>(here_->EnumerateFiles()), (TNames{"tricky", "tricky"}));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, OtherFailuresPassAndReleaseEverything) {
    for (const char* const name : {"a", "b", "c"}) Put(name);
    Trick([&](const fs::path& path) {
        fs::remove(path);
        Raise<CIOException>(kNotThere);
    });
    ExpectRaises<CIOException>(kNotThere, [&] { here_->EnumerateFiles(); });
    EXPECT_EQ(CTrickyFile::alive, 0);
}

TEST_F(FolderThatChanges, WhatAReplacedClassWithholdsIsReported) {
    constexpr const wchar* kEnumerateFiles = VRL_L("vorlund::CFolder::EnumerateFiles");
    constexpr const wchar* kEnumerateFolders = VRL_L("vorlund::CFolder::EnumerateFolders");
    const TObjectFactory nothing = [] { return static_cast<IObject*>(nullptr); };
    Put("a");
    CClassStore& store = v.GetClassStore();
    const TClassInfo list = *store.GetClassInfo(classid::CObjectList);
    store.Clear();
    store.RegisterClassVrl(list);
    store.RegisterClassVrl({classid::CFile, VRL_L("test::Nothing"), nothing});
    store.RegisterClassVrl({classid::CFolder, VRL_L("test::Nothing"), nothing});
    ExpectRaises<CBugException>({kEnumerateFiles, filefailures::kFolderFile, 57, VRL_L("Cannot create file")},
                                [&] { here_->EnumerateFiles(); });
    ExpectRaises<CBugException>(
        {kEnumerateFolders, filefailures::kFolderFile, 94, VRL_L("Cannot create folder")},
        [&] { here_->EnumerateFolders(); });
    store.Clear();
    store.RegisterClassVrl({classid::CObjectList, VRL_L("test::Nothing"), nothing});
    ExpectRaises<CBugException>(
        {kEnumerateFiles, filefailures::kFolderFile, 42, VRL_L("Cannot create object list")},
        [&] { here_->EnumerateFiles(); });
    ExpectRaises<CBugException>(
        {kEnumerateFolders, filefailures::kFolderFile, 79, VRL_L("Cannot create object list")},
        [&] { here_->EnumerateFolders(); });
}

} // namespace
} // namespace vorlund::test
