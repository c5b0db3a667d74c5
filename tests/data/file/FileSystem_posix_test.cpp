// What only POSIX systems have: names that are bytes, links, pipes and devices.
#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/DebugRecorder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>

#include <cstring>
#include <map>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorlund::test {
namespace {

class FileSystemPosix : public CFileTest {
protected:
    ~FileSystemPosix() noexcept override = default;

    wstring Path(const fs::path& name) const { return ToVorlund(At(name)); }
    CRefPtr<IFile> NewFile(const wstring& path) const {
        auto file = CreateAs<IFile>(classid::CFile);
        file->Initialize(path.c_str());
        return file;
    }
    CRefPtr<IFolder> Here() const {
        auto folder = CreateAs<IFolder>(classid::CFolder);
        folder->Initialize(ToVorlund(folder_.GetPath()).c_str());
        return folder;
    }

    /// The names of the files and of the folders.
    std::vector<std::string> ListedFiles() const { return Names<IFile>(Here()->EnumerateFiles()); }
    std::vector<std::string> ListedFolders() const { return Names<IFolder>(Here()->EnumerateFolders()); }

    CRefPtr<IFileInputStream> input_ = CreateAs<IFileInputStream>(classid::CFileInputStream);
    CRefPtr<IFileOutputStream> output_ = CreateAs<IFileOutputStream>(classid::CFileOutputStream);

private:
    template <class TEntry> static std::vector<std::string> Names(IObjectList* list) {
        const auto owned = CRefPtr<IObjectList>::Adopt(list);
        std::vector<std::string> names;
        for (unsigned int i = 0; i < owned->GetObjectCount(); ++i) {
            const auto entry = CRefPtr<IObject>::Adopt(owned->GetObject(i)).template Query<TEntry>();
            names.push_back(PathToUtf8(entry->GetName().GetBuffer()));
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

using TNames = std::vector<std::string>;

/// The descriptors that the process holds.
std::size_t CountDescriptors() {
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        (void)entry;
        ++count;
    }
    return count;
}

/// Lends the process no further descriptor.
class CNoDescriptors {
public:
    CNoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &former_);
        // Numbers from here on are refused; what is open stays.
        const rlimit none{0, former_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    CNoDescriptors(const CNoDescriptors&) = delete;
    CNoDescriptors& operator=(const CNoDescriptors&) = delete;
    ~CNoDescriptors() { setrlimit(RLIMIT_NOFILE, &former_); }

private:
    rlimit former_;
};

/// Whom every permission concerns, also when the tests run as the system's administrator.
class CPlainUser {
public:
    CPlainUser() : former_(geteuid()) { EXPECT_EQ(seteuid(former_ == 0 ? 65534 : former_), 0); }
    CPlainUser(const CPlainUser&) = delete;
    CPlainUser& operator=(const CPlainUser&) = delete;
    ~CPlainUser() { EXPECT_EQ(seteuid(former_), 0); }

private:
    const uid_t former_;
};

constexpr const wchar* kFolderFile = filefailures::kFolderFile;
constexpr TFailure kCannotSearchFiles{VRL_L("vorlund::CFolder::EnumerateFiles"), kFolderFile, 64,
                                      VRL_L("Cannot search '%s'")};
constexpr TFailure kCannotSearchFolders{VRL_L("vorlund::CFolder::EnumerateFolders"), kFolderFile, 101,
                                        VRL_L("Cannot search '%s'")};

// --- Names ---

TEST_F(FileSystemPosix, DrivePathIsAPathWithAFolderNamedC) {
    Put("C:/data/song.wav");
    const CWorkingFolder here(folder_.GetPath());
    const auto file = NewFile(VRL_L("C:\\data\\song.wav"));
    EXPECT_EQ(Narrow(file->GetPath()), "C:/data/song.wav");
    EXPECT_EQ(Narrow(file->GetName()), "song.wav");
    EXPECT_EQ(Narrow(file->GetTitle()), "song");
    EXPECT_EQ(Narrow(file->GetExtension()), "wav");
    EXPECT_EQ(Narrow(file->GetFolderPath()), "C:/data/");
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(VRL_L("C:\\data"));
    EXPECT_EQ(Narrow(folder->GetPath()), "C:/data/");
    EXPECT_EQ(Narrow(folder->GetName()), "data");
}

TEST_F(FileSystemPosix, NameWithABackslashIsListedAndOpened) {
    Put("we\\ird", "x");
    Put("ird", "other");
    Put("di\\r/in\\side", "xyz");
    EXPECT_EQ(ListedFiles(), (TNames{"ird", "we\\ird"}));
    EXPECT_EQ(ListedFolders(), (TNames{".", "..", "di\\r"}));
    const wchar name[] = {'w', 'e', 0xDC5C, 'i', 'r', 'd', 0};
    EXPECT_EQ(Narrow(PathFromUtf8("we\\ird")), Narrow(name));
    const auto file = NewFile(Path("we\\ird"));
    EXPECT_EQ(Narrow(file->GetName()), Narrow(name));
    EXPECT_EQ(CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream())->GetLength(), 1);
    input_->Open(Path("we\\ird").c_str());
    EXPECT_EQ(input_->GetLength(), 1);

    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(Path("di\\r").c_str());
    EXPECT_EQ(PathToUtf8(folder->GetName().GetBuffer()), "di\\r");
    const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    ASSERT_EQ(files->GetObjectCount(), 1u);
    const auto inside = CRefPtr<IObject>::Adopt(files->GetObject(0)).Query<IFile>();
    EXPECT_EQ(PathToUtf8(inside->GetPath().GetBuffer()), At("di\\r/in\\side").string());
    EXPECT_EQ(CRefPtr<IFileInputStream>::Adopt(inside->OpenInputStream())->GetLength(), 3);
}

TEST_F(FileSystemPosix, BackslashOfATextIsBetweenFoldersForEverybody) {
    Put("data/x", "inside");
    Put("data\\x", "a name");
    const CWorkingFolder here(folder_.GetPath());
    const auto file = NewFile(VRL_L("data\\x"));
    EXPECT_EQ(Narrow(file->GetPath()), "data/x");
    EXPECT_EQ(CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream())->GetLength(), 6);
    input_->Open(VRL_L("data\\x"));
    EXPECT_EQ(input_->GetLength(), 6);
    EXPECT_EQ(PathToUtf8(VRL_L("data\\x")), "data/x");
    output_->Open(VRL_L("data\\new"), false);
    output_->Write("y", 1);
    output_->Open(VRL_L("data\\x"), true);
    output_->Write("!", 1);
    output_->Close();
    EXPECT_EQ(ReadFile(At("data/new")), "y");
    EXPECT_EQ(ReadFile(At("data/x")), "inside!");
    EXPECT_EQ(ReadFile(At("data\\x")), "a name");
    EXPECT_FALSE(fs::exists(At("data\\new")));

    fs::remove(At("data/x"));
    fs::create_directory(At("data/x"));
    ExpectRaisesFor<CFileAccessException>(VRL_L("data\\x"), filefailures::kFileIsDirectory,
                                          [&] { NewFile(VRL_L("data\\x")); });
    fs::remove(At("data/x"));
    ExpectRaisesFor<CFileAccessException>(VRL_L("data\\x"), filefailures::kNoFile,
                                          [&] { NewFile(VRL_L("data\\x")); });
}

TEST_F(FileSystemPosix, NamesThatAreNotUtf8SurviveEnumerateAndOpen) {
    TNames names;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') names.push_back("n" + std::string(1, static_cast<char>(byte)));
    }
    for (const char* const name : {
             "\xC0\x80",
             "\xC1\xBF", // overlong forms of two bytes
             "\xE0\x80\x80",
             "\xE0\x9F\xBF",
             "\xF0\x80\x80\x80",
             "\xF0\x8F\xBF\xBF", // and of more
             "\xED\xA0\x80",
             "\xED\xAF\xBF",
             "\xED\xB0\x80",
             "\xED\xB2\x80",
             "\xED\xBF\xBF",             // surrogates
             "\xED\xA0\xBD\xED\xB8\x80", // a pair of them
             "\xF4\x90\x80\x80",
             "\xF5\x80\x80\x80",
             "\xF8\x88\x80\x80\x80", // beyond the last code point
             "\xC3",
             "a\xC3",
             "\xC3(",
             "\xE2\x82",
             "\xE2\x82z",
             "\xE2(\xAC",
             "\xF0\x9D\x84",
             "\xF0\x9D", // cut
             "\x80",
             "\x80\xBF",
             "\xC3\xA9\xA9",
             "\xA9\xC3\xA9",
             "\xFE\xFF",
             "\xFF\xFF\xFF",
             "\xEF\xBF\xBE",
             "\xEF\xBF\xBF",
             "\xEF\xBB\xBFname", // noncharacters and a mark: valid
             "\xF0\x9D\x84\x9E\x9E",
             "\xF0\x9D\x84\xF0\x9D\x84\x9E",
         })
        names.push_back(name);
    for (const std::string& name : names) Put(name, name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(ListedFiles(), names);

    const auto files = CRefPtr<IObjectList>::Adopt(Here()->EnumerateFiles());
    ASSERT_EQ(files->GetObjectCount(), names.size());
    for (unsigned int i = 0; i < files->GetObjectCount(); ++i) {
        const auto file = CRefPtr<IObject>::Adopt(files->GetObject(i)).Query<IFile>();
        const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
        char bytes[100];
        const std::uint64_t size = stream->Read(bytes, sizeof(bytes));
        EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(size)),
                  PathToUtf8(file->GetName().GetBuffer()));
    }
}

TEST_F(FileSystemPosix, FoldersThatAreNotUtf8AreEntered) {
    Put("\xFF\xC3(/\xED\xA0\x80/song\x80.wav", "x");
    auto folder = Here();
    for (int depth = 0; depth < 2; ++depth) {
        const auto folders = CRefPtr<IObjectList>::Adopt(folder->EnumerateFolders());
        ASSERT_EQ(folders->GetObjectCount(), 3u);
        for (unsigned int i = 0; i < 3; ++i) {
            const auto next = CRefPtr<IObject>::Adopt(folders->GetObject(i)).Query<IFolder>();
            if (*next->GetName().GetBuffer() != VRL_L('.')) folder = next;
        }
    }
    const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    ASSERT_EQ(files->GetObjectCount(), 1u);
    const auto file = CRefPtr<IObject>::Adopt(files->GetObject(0)).Query<IFile>();
    EXPECT_EQ(Narrow(file->GetTitle()), Narrow(wstring(VRL_L("song")) + wchar(0xDC80)));
    const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
    EXPECT_EQ(stream->GetLength(), 1);
    const auto parent = CRefPtr<IFolder>::Adopt(file->GetFolder());
    EXPECT_EQ(Narrow(parent->GetPath()), Narrow(folder->GetPath()));
}

TEST_F(FileSystemPosix, StrayByteStandsForItself) {
    const wchar name[] = {'n', 0xDCFF, 0};
    const CWorkingFolder here(folder_.GetPath());
    output_->Open(name, false);
    output_->Close();
    EXPECT_TRUE(fs::exists(At("n\xFF")));
}

TEST_F(FileSystemPosix, LoneSurrogatesThatStandForNoByteNameNothing) {
    const CWorkingFolder here(folder_.GetPath());
    for (const wchar unit : {0xD800, 0xDBFF, 0xDC00, 0xDC5B, 0xDC5D, 0xDC7F, 0xDD00, 0xDFFF}) {
        const wchar name[] = {'n', unit, 'm', 0};
        ExpectRaisesFor<CFileAccessException>(name, filefailures::kCannotRead, [&] { input_->Open(name); });
        ExpectRaisesFor<CFileAccessException>(name, filefailures::kCannotWrite,
                                              [&] { output_->Open(name, false); });
        ExpectRaisesFor<CFileAccessException>(name, filefailures::kNoFile, [&] { NewFile(name); });
        ExpectRaisesFor<CFileAccessException>(name, filefailures::kNoFolder,
                                              [&] { CreateAs<IFolder>(classid::CFolder)->Initialize(name); });
    }
    EXPECT_TRUE(fs::is_empty(folder_.GetPath()));
}

// --- Folders that cannot be searched ---

TEST_F(FileSystemPosix, LackOfDescriptorsIsNoEmptyFolder) {
    Put("song.wav");
    fs::create_directory(At("sub"));
    const auto here = Here();
    {
        const CNoDescriptors none;
        ExpectRaisesFor<CFileAccessException>(here->GetPath().GetBuffer(), kCannotSearchFiles,
                                              [&] { here->EnumerateFiles(); });
        ExpectRaisesFor<CFileAccessException>(here->GetPath().GetBuffer(), kCannotSearchFolders,
                                              [&] { here->EnumerateFolders(); });
    }
    EXPECT_EQ(ListedFiles(), TNames{"song.wav"});
    EXPECT_EQ(ListedFolders(), (TNames{".", "..", "sub"}));
}

TEST_F(FileSystemPosix, LackOfDescriptorsIsNoFolderWithoutPlugins) {
    const wstring folder = ToVorlund(BesideProgram(""));
    const CNoDescriptors none;
    ExpectRaisesFor<CFileAccessException>(folder, kCannotSearchFiles,
                                          [&] { v.GetPluginStore().LoadAvailablePlugins(); });
}

TEST_F(FileSystemPosix, EntriesThatCannotBeReachedAreLeftOutInSilence) {
    Put("sub/song.wav");
    fs::create_directory(At("sub/inner"));
    const auto sub = CreateAs<IFolder>(classid::CFolder);
    sub->Initialize(Path("sub").c_str());
    // It may be listed, but its entries may not be touched.
    fs::permissions(At("sub"), static_cast<fs::perms>(0444));
    fs::permissions(folder_.GetPath(), static_cast<fs::perms>(0755));
    {
        const CPlainUser user;
        CDebugRecorder recorder;
        EXPECT_EQ(CRefPtr<IObjectList>::Adopt(sub->EnumerateFiles())->GetObjectCount(), 0u);
        EXPECT_EQ(CRefPtr<IObjectList>::Adopt(sub->EnumerateFolders())->GetObjectCount(), 0u);
        EXPECT_TRUE(recorder.GetEntries().empty());
    }
    fs::permissions(At("sub"), static_cast<fs::perms>(0755));
}

// --- Links ---

TEST_F(FileSystemPosix, DanglingLinkIsAFileThatCannotBeOpened) {
    fs::create_symlink("nowhere", At("dangling"));
    fs::create_symlink("round", At("round"));
    EXPECT_EQ(ListedFiles(), (TNames{"dangling", "round"}));
    for (const char* const name : {"dangling", "round"}) {
        const auto file = NewFile(Path(name));
        EXPECT_EQ(Narrow(file->GetName()), name);
        ExpectRaisesFor<CFileAccessException>(Path(name), filefailures::kCannotRead,
                                              [&] { file->OpenInputStream(); });
        const auto folder = CreateAs<IFolder>(classid::CFolder);
        ExpectRaisesFor<CFileAccessException>(Path(name), filefailures::kFolderIsNoDirectory,
                                              [&] { folder->Initialize(Path(name).c_str()); });
    }
    EXPECT_FALSE(fs::exists(At("nowhere")));
}

TEST_F(FileSystemPosix, LinksCountAsWhatTheyLeadTo) {
    Put("data/song.wav", "sound");
    fs::create_symlink("data", At("folder link"));
    fs::create_symlink("data/song.wav", At("file link"));
    EXPECT_EQ(ListedFiles(), TNames{"file link"});
    EXPECT_EQ(ListedFolders(), (TNames{".", "..", "data", "folder link"}));
    const auto stream = CRefPtr<IFileInputStream>::Adopt(NewFile(Path("file link"))->OpenInputStream());
    EXPECT_EQ(stream->GetLength(), 5);
}

TEST_F(FileSystemPosix, VanishedEntryBehindALinkLeavesTheLink) {
    Put("song.wav");
    fs::create_symlink("song.wav", At("link"));
    const auto file = NewFile(Path("link"));
    fs::remove(At("song.wav"));
    CDebugRecorder recorder;
    EXPECT_EQ(ListedFiles(), TNames{"link"});
    EXPECT_TRUE(recorder.GetEntries().empty());
}

// --- Pipes and devices ---

TEST_F(FileSystemPosix, PipeIsAFileThatIsNotReadAndNeverWaitedFor) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
    EXPECT_EQ(ListedFiles(), TNames{"pipe"});
    const auto file = NewFile(Path("pipe"));
    ExpectRaisesFor<CFileAccessException>(Path("pipe"), filefailures::kCannotRead,
                                          [&] { file->OpenInputStream(); });
    // Nor with a writer: a pipe has no positions.
    const int end = open(At("pipe").c_str(), O_RDWR);
    ASSERT_GE(end, 0);
    ExpectRaisesFor<CFileAccessException>(Path("pipe"), filefailures::kCannotRead,
                                          [&] { input_->Open(Path("pipe").c_str()); });
    close(end);
}

TEST_F(FileSystemPosix, PipeIsWrittenWhenItHasAReader) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
    for (const bool append : {false, true}) {
        ExpectRaisesFor<CFileAccessException>(Path("pipe"), filefailures::kCannotWrite,
                                              [&] { output_->Open(Path("pipe").c_str(), append); });
        const int reader = open(At("pipe").c_str(), O_RDONLY | O_NONBLOCK);
        ASSERT_GE(reader, 0);
        output_->Open(Path("pipe").c_str(), append);
        output_->Write("sound", 5);
        output_->Flush();
        char bytes[10];
        ASSERT_EQ(read(reader, bytes, sizeof(bytes)), 5);
        EXPECT_EQ(std::string(bytes, 5), "sound");
        ExpectRaises<CIOException>(filefailures::kOutputSeekFailed, [&] { output_->Seek(0); });
        ExpectRaises<CIOException>(filefailures::kOutputSeekFailed, [&] { output_->GetLength(); });
        output_->Write("more", 4);
        output_->Close();
        EXPECT_EQ(read(reader, bytes, sizeof(bytes)), 4);
        close(reader);
    }
}

TEST_F(FileSystemPosix, LengthIsNotKnownWhileWhatWaitsCannotBeWrittenOut) {
    output_->Open(VRL_L("/dev/full"), false);
    output_->Write("waits in the buffer", 19);
    ExpectRaises<CIOException>(filefailures::kOutputSeekFailed, [&] { output_->GetLength(); });
}

TEST_F(FileSystemPosix, DevicesAreReadByPosition) {
    input_->Open(VRL_L("/dev/null"));
    EXPECT_EQ(input_->GetCapabilities(), 7u);
    EXPECT_EQ(input_->GetLength(), 0);
    EXPECT_TRUE(input_->Eof());
    char bytes[4] = {1, 2, 3, 4};
    EXPECT_EQ(input_->Read(bytes, 4), 0u);
    input_->Open(VRL_L("/dev/zero"));
    EXPECT_EQ(input_->GetLength(), 0);
    EXPECT_EQ(input_->Read(bytes, 4), 4u);
    EXPECT_EQ(std::string(bytes, 4), std::string(4, '\0'));
    EXPECT_EQ(input_->Tell(), 4);
    output_->Open(VRL_L("/dev/null"), false);
    output_->Write("gone", 4);
    output_->Flush();
}

TEST_F(FileSystemPosix, WhatCannotBeReadEndsTheRead) {
    // The memory of the process is a file with bytes that cannot be read at position 0.
    input_->Open(VRL_L("/proc/self/mem"));
    char bytes[8];
    EXPECT_EQ(input_->Read(bytes, 8), 0u);
    EXPECT_EQ(input_->Tell(), 0);
    input_->Seek(static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(&CountDescriptors)));
    EXPECT_EQ(input_->Read(bytes, 8), 8u);
    EXPECT_EQ(std::memcmp(bytes, reinterpret_cast<const void*>(&CountDescriptors), 8), 0);
}

// --- What the system lends ---

TEST_F(FileSystemPosix, DescriptorsAreGivenBack) {
    Put("song.wav", "sound");
    Put("data/other.wav");
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
    const std::size_t before = CountDescriptors();
    for (int i = 0; i < 3; ++i) {
        input_->Open(Path("song.wav").c_str());
        output_->Open(Path("copy.wav").c_str(), true);
        EXPECT_EQ(CountDescriptors(), before + 2);
        for (const char* const name : {"data", "pipe", "missing"}) {
            ExpectRaisesFor<CFileAccessException>(Path(name), filefailures::kCannotRead,
                                                  [&] { input_->Open(Path(name).c_str()); });
            const wstring target = Path(name == std::string("missing") ? "no/such" : name);
            ExpectRaisesFor<CFileAccessException>(target, filefailures::kCannotWrite,
                                                  [&] { output_->Open(target.c_str(), false); });
        }
        ListedFiles();
        ListedFolders();
        EXPECT_EQ(CountDescriptors(), before);
    }
}

TEST_F(FileSystemPosix, ChildProcessesInheritNothing) {
    std::map<int, bool> known;
    for (int descriptor = 0; descriptor < 200; ++descriptor)
        known[descriptor] = fcntl(descriptor, F_GETFD) >= 0;
    input_->Open(Path(Put("song.wav").filename()).c_str());
    output_->Open(Path("copy.wav").c_str(), false);
    int found = 0;
    for (int descriptor = 0; descriptor < 200; ++descriptor) {
        const int flags = fcntl(descriptor, F_GETFD);
        if (flags < 0 || known[descriptor]) continue;
        ++found;
        EXPECT_TRUE(flags & FD_CLOEXEC);
    }
    EXPECT_EQ(found, 2);
}

TEST_F(FileSystemPosix, GapsTakeNoRoomOnTheDisk) {
    output_->Open(Path("sparse").c_str(), false);
    output_->Seek(std::int64_t{5} << 30);
    output_->Write("x", 1);
    output_->Close();
    struct stat64 status;
    ASSERT_EQ(stat64(At("sparse").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks, 2048);
}

TEST_F(FileSystemPosix, NewFilesFollowTheMaskOfTheUser) {
    const mode_t former = umask(027);
    output_->Open(Path("new").c_str(), false);
    output_->Close();
    umask(former);
    EXPECT_EQ(fs::status(At("new")).permissions(), static_cast<fs::perms>(0640));
}

} // namespace
} // namespace vorlund::test
