// Files by name.
#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/DebugRecorder.h"
#include "support/Probes.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>

namespace vorlund::test {
namespace {

class File : public CFileTest {
protected:
    CRefPtr<IFile> NewFile() const { return CreateAs<IFile>(classid::CFile); }
    CRefPtr<IFile> NewFile(const wstring& path) const {
        auto file = NewFile();
        file->Initialize(path.c_str());
        return file;
    }
};

TEST_F(File, Identity) {
    const auto file = NewFile();
    EXPECT_EQ(file->GetClassId(), CId(0x918E84D7, 0x03CA40C4, 0xA1A93E28, 0xB0827B88));
    EXPECT_TRUE(file.Query<IFile>());
    EXPECT_TRUE(file.Query<IObject>());
    EXPECT_FALSE(file.Query<IFolder>());
    EXPECT_FALSE(file.Query<IStream>());
}

TEST_F(File, UninitialisedHasNoNameAndNoStreams) {
    const auto file = NewFile();
    EXPECT_EQ(Narrow(file->GetPath()), "");
    EXPECT_EQ(Narrow(file->GetName()), "");
    EXPECT_EQ(Narrow(file->GetTitle()), "");
    EXPECT_EQ(Narrow(file->GetExtension()), "");
    EXPECT_EQ(file->GetFolder(), nullptr);
    EXPECT_EQ(file->OpenInputStream(), nullptr);
    EXPECT_EQ(file->OpenOutputStream(), nullptr);
}

TEST_F(File, FolderPathDoesNotLookWhetherInitialised) {
    EXPECT_EQ(Narrow(NewFile()->GetFolderPath()), "./");
}

struct TNameRow {
    const char* test;
    /// Relative to the working folder, as given to `Initialize`.
    const wchar* given;
    const char* path;
    const char* name;
    const char* title;
    const char* extension;
    const char* folder;
};

class FileNames : public File, public testing::WithParamInterface<TNameRow> {};

TEST_P(FileNames, AreTakenFromThePath) {
    const TNameRow& row = GetParam();
    Put(row.path, "x");
    const CWorkingFolder here(folder_.GetPath());
    const auto file = NewFile(row.given);
    EXPECT_EQ(Narrow(file->GetPath()), row.path);
    EXPECT_EQ(Narrow(file->GetName()), row.name);
    EXPECT_EQ(Narrow(file->GetTitle()), row.title);
    EXPECT_EQ(Narrow(file->GetExtension()), row.extension);
    EXPECT_EQ(Narrow(file->GetFolderPath()), row.folder);
    const auto folder = CRefPtr<IFolder>::Adopt(file->GetFolder());
    EXPECT_EQ(Narrow(folder->GetPath()), row.folder);
    const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
    EXPECT_EQ(stream->GetLength(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FileNames,
    testing::Values(
        TNameRow{"Backslashes", VRL_L("data\\songs\\song.wav"), "data/songs/song.wav", "song.wav", "song",
                 "wav", "data/songs/"},
        TNameRow{"Slashes", VRL_L("data/song.wav"), "data/song.wav", "song.wav", "song", "wav", "data/"},
        TNameRow{"Mixed", VRL_L("data/songs\\song.wav"), "data/songs/song.wav", "song.wav", "song", "wav",
                 "data/songs/"},
        TNameRow{"SeveralDots", VRL_L("data\\archive.tar.gz"), "data/archive.tar.gz", "archive.tar.gz",
                 "archive.tar", "gz", "data/"},
        TNameRow{"NoDot", VRL_L("data/README"), "data/README", "README", "README", "", "data/"},
        TNameRow{"NoDotInTheNameButInTheFolder", VRL_L("data.old/README"), "data.old/README", "README",
                 "README", "", "data.old/"},
        TNameRow{"NoSlash", VRL_L("song.wav"), "song.wav", "song.wav", "song", "wav", "./"},
        TNameRow{"LeadingDot", VRL_L("data/.profile"), "data/.profile", ".profile", "", "profile", "data/"}),
    [](const auto& row) { return row.param.test; });

TEST_F(File, AbsolutePathKeepsItsFolder) {
    const wstring path = ToVorlund(Put("data/song.wav"));
    const auto file = NewFile(WithBackslashes(path));
    EXPECT_EQ(Narrow(file->GetPath()), Narrow(path));
    EXPECT_EQ(Narrow(file->GetFolderPath()), Narrow(ToVorlund(At("data/"))));
    EXPECT_EQ(Narrow(file->GetName()), "song.wav");
}

TEST_F(File, InitializeAnswersWithTheFileItselfAndAddsNoReference) {
    const wstring path = ToVorlund(Put("song.wav"));
    const auto file = NewFile();
    EXPECT_EQ(file->Initialize(path.c_str()), file.Get());
    EXPECT_EQ(file->Initialize(path.c_str()), file.Get());
    EXPECT_EQ(ReferencesOf(file.Get()), 1);
}

TEST_F(File, InitializeRaisesForWhatIsMissing) {
    const auto file = NewFile();
    for (const fs::path name : {"missing.wav", "no/such/folder.wav", "missing/"}) {
        const wstring path = ToVorlund(At(name));
        ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFile,
                                              [&] { file->Initialize(path.c_str()); });
    }
    ExpectRaisesFor<CFileAccessException>(VRL_L(""), filefailures::kNoFile,
                                          [&] { file->Initialize(VRL_L("")); });
    ExpectRaisesFor<CFileAccessException>(VRL_L("(null)"), filefailures::kNoFile,
                                          [&] { file->Initialize(nullptr); });
    EXPECT_EQ(Narrow(file->GetPath()), "");
    EXPECT_EQ(file->OpenInputStream(), nullptr);
}

TEST_F(File, InitializeRaisesForAFileNamedAsAFolder) {
    const wstring path = ToVorlund(Put("song.wav")) + VRL_L('/');
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFile,
                                          [&] { NewFile()->Initialize(path.c_str()); });
}

TEST_F(File, InitializeRaisesForADirectory) {
    const auto file = NewFile();
    const wstring path = ToVorlund(folder_.GetPath());
    for (const wstring& given : {path, path + VRL_L('/'), wstring(VRL_L(".")), wstring(VRL_L(".."))}) {
        ExpectRaisesFor<CFileAccessException>(given, filefailures::kFileIsDirectory,
                                              [&] { file->Initialize(given.c_str()); });
    }
    EXPECT_EQ(Narrow(file->GetPath()), "");
}

TEST_F(File, MessageNamesThePathAsGiven) {
    const wstring path = WithBackslashes(ToVorlund(At("missing.wav")));
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFile,
                                          [&] { NewFile()->Initialize(path.c_str()); });
}

TEST_F(File, InitializesAfterAFailure) {
    const auto file = NewFile();
    const wstring path = ToVorlund(At("song.wav"));
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kNoFile,
                                          [&] { file->Initialize(path.c_str()); });
    Put("song.wav");
    file->Initialize(path.c_str());
    EXPECT_EQ(Narrow(file->GetPath()), Narrow(path));
}

TEST_F(File, SecondInitializeIsIgnored) {
    const wstring first = ToVorlund(Put("first.wav"));
    const auto file = NewFile(first);
    file->Initialize(ToVorlund(Put("second.wav")).c_str());
    EXPECT_EQ(Narrow(file->GetPath()), Narrow(first));
    // It is not even looked at.
    file->Initialize(ToVorlund(At("missing.wav")).c_str());
    file->Initialize(ToVorlund(folder_.GetPath()).c_str());
    EXPECT_EQ(Narrow(file->GetPath()), Narrow(first));
}

TEST_F(File, MessageIsCutAt255Units) {
    const wstring longName(400, VRL_L('x'));
    ASSERT_EQ(PathMessage(filefailures::kNoFile.reason, longName).size(), 255u);
    ExpectRaisesFor<CFileAccessException>(longName, filefailures::kNoFile,
                                          [&] { NewFile()->Initialize(longName.c_str()); });
    // 241 units and the rest of the message fill the buffer to the last unit.
    const wstring fitting(241, VRL_L('y'));
    ExpectRaisesFor<CFileAccessException>(fitting, filefailures::kNoFile,
                                          [&] { NewFile()->Initialize(fitting.c_str()); });
}

TEST_F(File, PathMayStandInTheMessageBuffer) {
    const auto file = NewFile();
    try {
        file->Initialize(VRL_L("missing.wav"));
        FAIL();
    } catch (const CFileAccessException& exception) {
        const wchar* const reason = exception.GetReason();
        ExpectRaisesFor<CFileAccessException>(VRL_L("Cannot find 'missing.wav'"), filefailures::kNoFile,
                                              [&] { file->Initialize(reason); });
        // One buffer for the process: the first exception shows the text of the second.
        EXPECT_EQ(Narrow(exception.GetReason()), "Cannot find 'Cannot find 'missing.wav''");
    }
}

TEST_F(File, StreamsReadAndWriteTheFile) {
    const fs::path path = Put("song.wav", "before");
    const auto file = NewFile(ToVorlund(path));
    {
        const auto input = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
        EXPECT_EQ(input->GetCapabilities(), 7u);
        EXPECT_EQ(input->GetLength(), 6);
        EXPECT_EQ(ReferencesOf(input.Get()), 1);
    }
    {
        const auto output = CRefPtr<IFileOutputStream>::Adopt(file->OpenOutputStream());
        EXPECT_EQ(output->GetCapabilities(), 11u);
        EXPECT_EQ(fs::file_size(path), 0u) << "the output stream empties the file";
        output->Write("after!!", 7);
        EXPECT_EQ(ReferencesOf(output.Get()), 1);
    }
    EXPECT_EQ(ReadFile(path), "after!!");
}

TEST_F(File, FolderIsANewObjectEachTime) {
    const auto file = NewFile(ToVorlund(Put("data/song.wav")));
    const auto first = CRefPtr<IFolder>::Adopt(file->GetFolder());
    const auto second = CRefPtr<IFolder>::Adopt(file->GetFolder());
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_EQ(first->GetClassId(), classid::CFolder);
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(Narrow(first->GetName()), "data");
}

TEST_F(File, ServicesAreMadeByTheClassStore) {
    const auto file = NewFile(ToVorlund(Put("song.wav")));
    const int number = file->GetObjectNumber();
    const auto input = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
    const auto folder = CRefPtr<IFolder>::Adopt(file->GetFolder());
    const auto output = CRefPtr<IFileOutputStream>::Adopt(file->OpenOutputStream());
    EXPECT_EQ(input->GetObjectNumber(), number + 1);
    EXPECT_EQ(folder->GetObjectNumber(), number + 2);
    EXPECT_EQ(output->GetObjectNumber(), number + 3);
    EXPECT_EQ(input->GetClassId(), classid::CFileInputStream);
    EXPECT_EQ(output->GetClassId(), classid::CFileOutputStream);
}

TEST_F(File, WhatAReplacedClassWithholdsIsReported) {
    const auto file = NewFile(ToVorlund(Put("song.wav")));
    CClassStore& store = v.GetClassStore();
    store.Clear();
    for (const CId& id : {classid::CFolder, classid::CFileInputStream, classid::CFileOutputStream})
        store.RegisterClassVrl({id, VRL_L("test::Nothing"), [] { return static_cast<IObject*>(nullptr); }});
    ExpectRaises<CBugException>(
        {VRL_L("vorlund::CFile::GetFolder"), filefailures::kFileFile, 55, VRL_L("Cannot create folder")},
        [&] { file->GetFolder(); });
    ExpectRaises<CBugException>({VRL_L("vorlund::CFile::OpenInputStream"), filefailures::kFileFile, 102,
                                 VRL_L("Cannot create file input stream")},
                                [&] { file->OpenInputStream(); });
    ExpectRaises<CBugException>({VRL_L("vorlund::CFile::OpenOutputStream"), filefailures::kFileFile, 112,
                                 VRL_L("Cannot create file output stream")},
                                [&] { file->OpenOutputStream(); });
}

TEST_F(File, NewStreamIsReleasedWhenItsOpeningRaises) {
    const fs::path path = Put("data/song.wav");
    const auto file = NewFile(ToVorlund(path));
    fs::remove_all(path.parent_path());
    const wstring folder = ToVorlund(path.parent_path()) + VRL_L('/');
    CDebugRecorder recorder;
    for (int i = 0; i < 3; ++i) {
        ExpectRaisesFor<CFileAccessException>(ToVorlund(path), filefailures::kCannotRead,
                                              [&] { file->OpenInputStream(); });
        ExpectRaisesFor<CFileAccessException>(ToVorlund(path), filefailures::kCannotWrite,
                                              [&] { file->OpenOutputStream(); });
        ExpectRaisesFor<CFileAccessException>(folder, filefailures::kNoFolder, [&] { file->GetFolder(); });
    }
    const std::vector<std::string> reports = recorder.GetTexts(DEBUG_MESSAGE_OUTPUT);
    ASSERT_EQ(reports.size(), 9u);
    EXPECT_NE(reports[0].find("vorlund::CFileInputStream::Open"), std::string::npos);
    EXPECT_NE(reports[1].find("vorlund::CFileOutputStream::Open"), std::string::npos);
    EXPECT_NE(reports[2].find("vorlund::CFolder::Initialize"), std::string::npos);
}

TEST_F(File, NamesBeyondAsciiAndBeyondTheAnsiCodePageWork) {
    for (const wchar* const name :
         {VRL_L("\u00E9t\u00E9.wav"), VRL_L("\u03B1\u0416\u05D0\u0E01.wav"), VRL_L("\u6B4C\u66F2.wav"),
          VRL_L("\U0001D11E\U0001F3B5.wav"), VRL_L("e\u0301.wav")}) {
        const fs::path path = Put(ToPath(name), "x");
        const auto file = NewFile(ToVorlund(path));
        EXPECT_EQ(Narrow(file->GetName()), Narrow(name));
        const auto input = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
        EXPECT_EQ(input->GetLength(), 1);
        const auto output = CRefPtr<IFileOutputStream>::Adopt(file->OpenOutputStream());
        output->Write("yz", 2);
        output->Close();
        EXPECT_EQ(ReadFile(path), "yz");
    }
}

} // namespace
} // namespace vorlund::test
