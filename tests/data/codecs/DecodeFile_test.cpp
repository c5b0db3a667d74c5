// Decoding files through `CCodecClassStore::DecodeFile`.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/TestDecoders.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = codecstorefailures::kCodecStoreFile;
constexpr const wchar* kDecodeFile = VRL_L("vorlund::CCodecClassStore::DecodeFile");
constexpr TFailure kNoFileStream{kDecodeFile, kFile, 362, VRL_L("Cannot create file input stream")};
constexpr TFailure kCannotDecodeFormat{kDecodeFile, kFile, 370, VRL_L("Cannot decode file '%s'")};
constexpr TFailure kCannotDecodeIo{kDecodeFile, kFile, 373, VRL_L("Cannot decode file '%s'")};
constexpr TFailure kOnRequest{VRL_L("test::OnRequest"), VRL_L("tests/data/DecodeFile_test"), 1,
                              VRL_L("on request")};
constexpr const wchar* kPath = VRL_L("DecodeFile.tmp");

class DecodeFile : public testing::Test {
protected:
    DecodeFile() {
        store_.Init();
        std::ofstream("DecodeFile.tmp", std::ios::binary) << "hello";
    }
    /// Windows does not remove a file that is still open.
    ~DecodeFile() noexcept override {
        EXPECT_EQ(CLiveObject::GetCount(), before_);
        EXPECT_EQ(std::remove("DecodeFile.tmp"), 0);
        store_.Close();
    }
    CRefPtr<IInputStream> Decode(const wchar* path, const CId& wanted) {
        return CRefPtr<IInputStream>::Adopt(store_.DecodeFile(path, wanted));
    }

    CTemporaryFolder folder_;
    CWorkingFolder working_{folder_.GetPath()};
    CLibraryScope library_;
    int before_ = CLiveObject::GetCount();
    CTestDecoders decoders_;
    CCodecClassStore store_;
};

TEST_F(DecodeFile, ChainHoldsTheFile) {
    decoders_.Register(store_, 0, {.accepts = CId::Null(), .produces = TestFormat(2)});
    const auto decoded = Decode(kPath, TestFormat(2));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(0));
    EXPECT_EQ(ReferencesOf(decoded.Get()), 1);
    const auto file = CRefPtr<IInputStream>::Adopt(decoded.Query<IInputStreamFilter>()->GetInputStream());
    EXPECT_EQ(file->GetClassId(), classid::CFileInputStream);
    EXPECT_EQ(ReferencesOf(file.Get()), 2);
    char buffer[6] = {};
    EXPECT_EQ(decoded->Read(buffer, 6), 5U);
    EXPECT_STREQ(buffer, "hello");
}

TEST_F(DecodeFile, WithoutADecoderTheFileItselfIsTheLongestChain) {
    const auto decoded = Decode(kPath, CId::Null());
    EXPECT_EQ(decoded->GetClassId(), classid::CFileInputStream);
    EXPECT_EQ(ReferencesOf(decoded.Get()), 1);
    EXPECT_EQ(decoded->GetLength(), 5);
}

TEST_F(DecodeFile, FailedOpenPassesOn) {
    const wchar* const path = VRL_L("no/such/file");
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kCannotRead,
                                          [&] { Decode(path, CId::Null()); });
}

TEST_F(DecodeFile, UndecodableFileIsNamed) {
    ExpectRaisesFor<CDataFormatException>(kPath, kCannotDecodeFormat, [&] { Decode(kPath, TestFormat(2)); });
    decoders_.Register(store_, 0, {.accepts = TestFormat(50), .produces = TestFormat(2)});
    ExpectRaisesFor<CDataFormatException>(kPath, kCannotDecodeFormat, [&] { Decode(kPath, TestFormat(2)); });
    // A decoder that cannot read is passed over like one that refuses.
    CTestDecoders::plans[0].onConnect = [](IInputStream*) { Raise<CIOException>(kOnRequest); };
    ExpectRaisesFor<CDataFormatException>(kPath, kCannotDecodeFormat, [&] { Decode(kPath, TestFormat(2)); });
}

TEST_F(DecodeFile, FailuresOfTheSearchAreNamed) {
    decoders_.Register(store_, 0, {.accepts = CId::Null(), .produces = TestFormat(2)});
    CTestDecoders::plans[0].onGetFormat = [] { Raise<CDataFormatException>(kOnRequest); };
    ExpectRaisesFor<CDataFormatException>(kPath, kCannotDecodeFormat, [&] { Decode(kPath, TestFormat(2)); });
    CTestDecoders::plans[0].onGetFormat = [] { Raise<CIOException>(kOnRequest); };
    ExpectRaisesFor<CIOException>(kPath, kCannotDecodeIo, [&] { Decode(kPath, TestFormat(2)); });
}

TEST_F(DecodeFile, OtherFailuresPassOn) {
    decoders_.Register(store_, 0, {.accepts = CId::Null(), .produces = TestFormat(2)});
    CTestDecoders::plans[0].onConnect = [](IInputStream*) { Raise<CInvalidStateException>(kOnRequest); };
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(kPath, TestFormat(2)); });
    ExpectRaises<CInvalidStateException>(kOnRequest, [&] { Decode(kPath, CId::Null()); });
    CTestDecoders::plans[0].onConnect = [](IInputStream*) { throw std::runtime_error("foreign"); };
    EXPECT_THROW(Decode(kPath, TestFormat(2)), std::runtime_error);
}

/// A file that needs no file system.
class CMemoryFile : public CInputStreamImpl<IFileInputStream> {
public:
    static constexpr CId ClassId = classid::CFileInputStream;

    void Open(const wchar* path) override { opened.push_back(Narrow(path)); }

    static inline TCallLog opened;

private:
    CLiveObject live_;
};

class DecodeFileFromMemory : public DecodeFile {
protected:
    DecodeFileFromMemory() {
        CMemoryFile::opened.clear();
        const TClassInfo kept[] = {*v.GetClassStore().GetClassInfo(classid::CPushObjectEnumerator),
                                   *v.GetClassStore().GetClassInfo(classid::CPtrObject)};
        v.GetClassStore().Clear();
        for (const TClassInfo& info : kept) v.GetClassStore().RegisterClassVrl(info);
    }
    void RegisterFileClass(TObjectFactory factory) {
        v.GetClassStore().RegisterClassVrl({classid::CFileInputStream, VRL_L("test::CMemoryFile"), factory});
    }
};

TEST_F(DecodeFileFromMemory, ReferenceToTheFileIsGivenBackInEveryCase) {
    RegisterFileClass(&NewObject<CMemoryFile>);
    decoders_.Register(store_, 0, {.accepts = CId::Null(), .produces = TestFormat(2)});
    auto decoded = Decode(VRL_L("any"), TestFormat(2));
    EXPECT_EQ(CLiveObject::GetCount(), before_ + 2);
    decoded.Reset();
    EXPECT_EQ(CLiveObject::GetCount(), before_);
    ExpectRaisesFor<CDataFormatException>(VRL_L("none"), kCannotDecodeFormat,
                                          [&] { Decode(VRL_L("none"), TestFormat(3)); });
    EXPECT_EQ(CLiveObject::GetCount(), before_);
    CTestDecoders::plans[0].onGetFormat = [] { Raise<CIOException>(kOnRequest); };
    ExpectRaisesFor<CIOException>(VRL_L("broken"), kCannotDecodeIo,
                                  [&] { Decode(VRL_L("broken"), TestFormat(2)); });
    EXPECT_EQ(CLiveObject::GetCount(), before_);
    CTestDecoders::plans[0].onGetFormat = [] { throw std::runtime_error("foreign"); };
    EXPECT_THROW(Decode(VRL_L("foreign"), TestFormat(2)), std::runtime_error);
    EXPECT_EQ(CMemoryFile::opened, (TCallLog{"any", "none", "broken", "foreign"}));
}

TEST_F(DecodeFileFromMemory, LongPathIsCut) {
    RegisterFileClass(&NewObject<CMemoryFile>);
    const wstring path(1000, VRL_L('x'));
    ASSERT_EQ(PathMessage(kCannotDecodeFormat.reason, path).size(), 255u);
    ExpectRaisesFor<CDataFormatException>(path, kCannotDecodeFormat,
                                          [&] { Decode(path.c_str(), TestFormat(3)); });
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(DecodeFileFromMemory, ClassThatYieldsNoFileStreamIsABug) {
    RegisterFileClass(&NoObject);
    ExpectRaises<CBugException>(kNoFileStream, [&] { Decode(VRL_L("any"), TestFormat(2)); });
    v.GetClassStore().Clear();
    RegisterFileClass(&NewObject<CMemoryInputStream>);
    ExpectRaises<CBugException>(kNoFileStream, [&] { Decode(VRL_L("any"), TestFormat(2)); });
}

} // namespace
} // namespace vorlund::test
