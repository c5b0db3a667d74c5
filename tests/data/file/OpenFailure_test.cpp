// Why files are not opened.
#include "data/file/RefusedOpenings.h"
#include "data/file/TemporaryFolder.h"
#include "support/Text.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/File.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <set>
#include <string>
#include <thread>

namespace vorlund::test {
namespace {

using OpenFailure = CRefusedOpenings;

TEST_F(OpenFailure, NothingOfThatName) {
    EXPECT_EQ(OfInput("missing"), OPEN_CAUSE_MISSING);
    EXPECT_NE(GetOpenFailure().code, 0u);
    EXPECT_EQ(OfInput("no folder/missing"), OPEN_CAUSE_MISSING);
    EXPECT_EQ(OfOutput("no folder/new"), OPEN_CAUSE_MISSING);
}

TEST_F(OpenFailure, AFolder) {
    fs::create_directory(At("folder"));
    EXPECT_EQ(OfInput("folder"), OPEN_CAUSE_FOLDER);
    EXPECT_EQ(OfOutput("folder"), OPEN_CAUSE_FOLDER);
}

TEST_F(OpenFailure, NoName) {
    EXPECT_THROW(input_->Open(nullptr), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_NAME);
    EXPECT_THROW(output_->Open(nullptr, false), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_NAME);
}

TEST_F(OpenFailure, StaysUntilTheNextOneAndBelongsToItsThread) {
    OfInput("missing");
    WriteFile(At("there"), "x");
    input_->Open(ToVorlund(At("there")).c_str());
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_MISSING);
    std::thread([] { EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_NONE); }).join();
}

TEST_F(OpenFailure, WhatOpensFilesForOthersCounts) {
    const wstring folder = ToVorlund(folder_.GetPath());
    OfInput("missing");
    EXPECT_THROW(CInputStreamSelector(folder.c_str()), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_FOLDER);
    OfInput("missing");
    EXPECT_THROW(v.GetCodecClassStore().DecodeFile(folder.c_str(), CId::Null()), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_FOLDER);
}

TEST(OpenFailureTexts, EveryCauseHasOneOfItsOwn) {
    std::set<std::string> texts;
    for (int cause = OPEN_CAUSE_NONE; cause <= OPEN_CAUSE_OTHER; ++cause)
        texts.insert(Narrow(DescribeOpenCause(static_cast<TOpenCause>(cause))));
    EXPECT_EQ(texts.size(), 9u);
    EXPECT_STREQ(Narrow(DescribeOpenCause(static_cast<TOpenCause>(99))).c_str(), "the system refuses it");
}

} // namespace
} // namespace vorlund::test
