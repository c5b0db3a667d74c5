// The command "repair".
#include "cli/DecodeCommand.h"

namespace vorlund::test {
namespace {

class RepairCommand : public DecodeCommand {
protected:
    static std::string Output(const TChildEnd& end) { return WithoutReturns(end.output); }

    /// A file of that many bytes: its head, a hole, and eight bytes more.
    std::string MakeLarge(const CWavBuilder& head, std::uint64_t size) const {
        const std::string path = Make("large.wav", head.Build());
        std::filesystem::resize_file(path, size - kLast.size());
        std::ofstream(path, std::ios::binary | std::ios::app) << kLast;
        return path;
    }
    TBytes LoadLarge(std::uint64_t at, std::size_t size) const {
        std::ifstream file(At("large.wav"), std::ios::binary);
        file.seekg(static_cast<std::streamoff>(at));
        TBytes bytes(size);
        file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
        bytes.resize(static_cast<std::size_t>(file.gcount()));
        return bytes;
    }
    /// The head of an RF64 of 8 bits.
    static TBytes LargeHead(std::uint64_t size, std::uint64_t sound) {
        TBytes sizes;
        for (const std::uint64_t number : {size - 8, sound, sound}) {
            Append32(sizes, static_cast<std::uint32_t>(number));
            Append32(sizes, static_cast<std::uint32_t>(number >> 32));
        }
        Append32(sizes, 0);
        return CWavBuilder()
            .Header("RF64", "WAVE")
            .RiffSize(~0u)
            .Chunk("ds64", sizes)
            .Format({.bits = 8})
            .Declare("data", ~0u)
            .Build();
    }

    const std::string kLast = "the end.";
    const TBytes good_ = PlainWav({.channels = 2}, Ramp(400));
    const TBytes wrong_ =
        CWavBuilder().Format({.channels = 2}).RiffSize(0).Declare("data", 0, Ramp(400)).Build();
};

TEST_F(RepairCommand, MendsEveryFileAndSaysWhat) {
    const std::string good = Make("good.wav", good_);
    const std::string wrong = Make("wrong.wav", wrong_);
    TChildEnd end = Run({"repair", "--dry-run", good, wrong});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(Output(end), "File      " + good + "\nRight     every size\nFile      " + wrong +
                               "\nWrong     RIFF size 0 becomes 436\nWrong     data size 0 becomes 400\n");
    EXPECT_EQ(end.errors, "vorlund: 1 of 2 files needs a repair\n");
    EXPECT_EQ(Load("wrong.wav"), wrong_);

    end = Run({"repair", good, wrong});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(Output(end), "File      " + good + "\nRight     every size\nFile      " + wrong +
                               "\nMended    RIFF size 0 becomes 436\nMended    data size 0 becomes 400\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(Load("good.wav"), good_);
    EXPECT_EQ(Load("wrong.wav"), good_);
    EXPECT_TRUE(Run({"repair", "--dry-run", good, wrong}).IsSuccess());
}

TEST_F(RepairCommand, OneFileThatCannotBeMendedSparesNoOther) {
    const std::string text = Make("text.wav", std::string("only words"));
    const std::string wrong = Make("wrong.wav", wrong_);
    const TChildEnd end = Run({"repair", text, At("missing.wav"), wrong});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors, "vorlund: Cannot repair '" + text + "': Invalid header\nvorlund: Cannot repair '" +
                              At("missing.wav") + "': Cannot open '" + At("missing.wav") +
                              "' for writing: there is no such file; check the name\n"
                              "vorlund: 2 of 3 files cannot be repaired\n");
    EXPECT_EQ(Load("wrong.wav"), good_);
    EXPECT_EQ(Load("text.wav"), TBytes({'o', 'n', 'l', 'y', ' ', 'w', 'o', 'r', 'd', 's'}));
    EXPECT_EQ(Run({"repair", text}).errors, "vorlund: Cannot repair '" + text + "': Invalid header\n");
    EXPECT_EQ(Run({"repair"}).exitCode, 2u);
}

TEST_F(RepairCommand, WhatWasMendedIsDecoded) {
    TBytes cut = PlainWav({.channels = 2}, Ramp(8000));
    cut.resize(5001);
    const std::string file = Make("cut.wav", cut);
    EXPECT_TRUE(Run({"repair", file}).IsSuccess());
    EXPECT_TRUE(Decode({file, "-o", At("out.pcm")}).IsSuccess());
    EXPECT_EQ(Load("out.pcm"), Ramp(4956));
}

TEST_F(RepairCommand, FilesBeyondFourGibBecomeRf64WhereThereIsRoom) {
    constexpr std::uint64_t kSound = (std::uint64_t{5} << 30) + 6;
    constexpr std::uint64_t kSize = kSound + 80;
    const struct {
        const char* what;
        std::uint32_t riff;
        std::uint32_t data;
    } rows[] = {{"sizes to come", 0, 0},
                {"sizes that nobody knew", ~0u, ~0u},
                {"sizes of the last second before", 0x10000000 + 72, 0x10000000},
                {"the lower half of the sizes", 0x40000006 + 72, 0x40000006},
                {"the most that fields hold", 0x7FFFFFFF, 0x7FFFFFFF - 72}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto head = CWavBuilder()
                              .RiffSize(row.riff)
                              .Chunk("JUNK", TBytes(28))
                              .Format({.bits = 8})
                              .Declare("data", row.data);
        const std::string path = MakeLarge(head, kSize);
        const std::string changes = "RIFF becomes RF64\nX RIFF size " + std::to_string(row.riff) +
                                    " becomes " + std::to_string(kSize - 8) + "\nX data size " +
                                    std::to_string(row.data) + " becomes " + std::to_string(kSound) + "\n";
        const auto expected = [&](const std::string& label) {
            std::string text = "File      " + path + "\nX " + changes;
            for (std::size_t at = 0; (at = text.find("X ", at)) != std::string::npos;)
                text.replace(at, 2, label);
            return text;
        };
        TChildEnd end = Run({"repair", "--dry-run", path});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(Output(end), expected("Wrong     "));
        EXPECT_EQ(LoadLarge(0, 80), head.Build());
        end = Run({"repair", path});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(Output(end), expected("Mended    "));
        EXPECT_EQ(std::filesystem::file_size(path), kSize);
        EXPECT_EQ(LoadLarge(0, 80), LargeHead(kSize, kSound));
        EXPECT_EQ(LoadLarge(kSize - 8, 9), TBytes(kLast.begin(), kLast.end()));
        EXPECT_EQ(Output(Run({"repair", path})), "File      " + path + "\nRight     every size\n");
    }
}

TEST_F(RepairCommand, AnOddSizeBeyondFourGibGetsItsPadding) {
    constexpr std::uint64_t kSound = (std::uint64_t{4} << 30) + 9;
    MakeLarge(CWavBuilder().RiffSize(0).Chunk("JUNK", TBytes(28)).Format({.bits = 8}).Declare("data", 0),
              kSound + 80);
    EXPECT_TRUE(Run({"repair", At("large.wav")}).IsSuccess());
    EXPECT_EQ(LoadLarge(0, 80), LargeHead(kSound + 81, kSound));
    TBytes last(kLast.begin(), kLast.end());
    last.push_back(0);
    EXPECT_EQ(LoadLarge(kSound + 72, 20), last);
}

TEST_F(RepairCommand, FilesBeyondFourGibWithoutRoomStay) {
    // The room has to be the first chunk, and large enough.
    const CWavBuilder heads[] = {
        CWavBuilder().RiffSize(0).Format({.bits = 8}).Declare("data", 0),
        CWavBuilder().RiffSize(~0u).Format({.bits = 8}).Chunk("JUNK", TBytes(28)).Declare("data", ~0u),
        CWavBuilder().RiffSize(0).Chunk("JUNK", TBytes(27)).Raw({0}).Format({.bits = 8}).Declare("data", 0)};
    constexpr std::uint64_t kSize = std::uint64_t{5} << 30;
    for (const CWavBuilder& head : heads) {
        const std::string path = MakeLarge(head, kSize);
        for (const bool isTrial : {true, false}) {
            std::vector<std::string> arguments{"repair", path};
            if (isTrial) arguments.insert(arguments.begin() + 1, "--dry-run");
            const TChildEnd end = Run(arguments);
            EXPECT_EQ(end.exitCode, 1u);
            EXPECT_EQ(end.errors,
                      "vorlund: Cannot repair '" + path +
                          "': The file needs sizes of 64 bits, and its head has no room for them\n");
        }
        EXPECT_EQ(std::filesystem::file_size(path), kSize);
        const TBytes bytes = head.Build();
        EXPECT_EQ(LoadLarge(0, bytes.size()), bytes);
    }
}

} // namespace
} // namespace vorlund::test
