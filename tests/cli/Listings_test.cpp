// The commands "classes", "codecs" and "plugins", "--version -v", and what the program says about words that
// it does not know.
#include "api/plugins/TestPlugins.h"
#include "cli/DecodeCommand.h"

#include <vorlund/Version.h>

#include <sstream>

namespace vorlund::test {
namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// The output of a run that goes well, without anything on the standard error stream.
std::string Print(const std::vector<std::string>& arguments) {
    const TChildEnd end = RunChild("vorlund", {.arguments = arguments});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.errors, "");
    return WithoutReturns(end.output);
}

/// The line that begins with `head`, with single blanks between its words; empty when there is none.
std::string FindLine(const std::string& text, const std::string& head) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(head)) continue;
        std::string squeezed;
        for (const char unit : line)
            if (unit != ' ' || !squeezed.ends_with(' ')) squeezed += unit;
        return squeezed;
    }
    return {};
}

/// The text of the key in one line of JSON as the program writes it.
std::string JsonLine(const char* key, const std::string& value) {
    return '"' + std::string(key) + "\": " + value;
}

class Listings : public CProgramFolder {
protected:
    /// A table over the plug-ins of a folder only.
    static std::string PrintOf(const CPluginFolder& folder, const std::string& command,
                               const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"--no-plugins", "--plugin-path", folder.GetFolder().string(),
                                           command};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Print(arguments);
    }
};

TEST_F(Listings, ClassesNameTheirIdentifiersAndWhoBringsThem) {
    const CPluginFolder folder;
    folder.Add("recorded");
    const std::string table = PrintOf(folder, "classes");
    EXPECT_EQ(FindLine(table, "Class "), "Class From Identifier");
    EXPECT_EQ(FindLine(table, "vorlund::CWavDecoder "),
              "vorlund::CWavDecoder the library {521C3225,5C8F4D10,BE3A0AB0,62E4711B}");
    EXPECT_EQ(FindLine(table, "test::CRecorded "),
              "test::CRecorded plug-in 'recorded' {7E57C1A5,0000000A,0000000B,0000000C}");
    const std::string json = PrintOf(folder, "classes", {"--json"});
    EXPECT_TRUE(Has(json, JsonLine("name", "\"test::CRecorded\""))) << json;
    EXPECT_TRUE(Has(json, JsonLine("plugin", "null")));
    EXPECT_TRUE(Has(json, JsonLine("creatable", "true")));
}

TEST_F(Listings, CodecsTellWhoReadsWhatAndWhyNot) {
    const CPluginFolder folder;
    folder.Add("recorded");
    // The name of a plug-in that is known, and cannot be loaded.
    folder.Add("depending", std::string("sndfile") + kPluginEnding);
    const std::string table = PrintOf(folder, "codecs");
    EXPECT_EQ(FindLine(table, "vorlund::CWavDecoder "), "vorlund::CWavDecoder bytes audio PCM the library");
    EXPECT_EQ(FindLine(table, "test::CRecorded "),
              "test::CRecorded {00000001,00000002,00000003,00000004} {00000005,00000006,00000007,00000008} "
              "plug-in 'recorded'");
    const std::string why = std::string("plug-in 'sndfile', not loaded: a library that it needs is missing: "
                                        "plugin_dependency") +
                            kPluginEnding;
    EXPECT_EQ(FindLine(table, "FLAC "), "FLAC " + why);
    EXPECT_EQ(FindLine(table, "WAV "), "WAV the library, PCM of 8 and 16 bits; for the others " + why);
    EXPECT_EQ(FindLine(table, "PNG "), "PNG install the plug-in 'image'");
    EXPECT_EQ(FindLine(table, "ZIP "), "ZIP nobody");
    const std::string json = PrintOf(folder, "codecs", {"--json"});
    for (const char* const state : {"\"partly\"", "\"missing\"", "\"unknown\""})
        EXPECT_TRUE(Has(json, JsonLine("state", state))) << state;
}

TEST_F(Listings, WithoutPluginsThereIsNoEncoder) {
    const TChildEnd end = Run({"codecs"});
    EXPECT_TRUE(Has(end.output, "Encoder: none is registered"));
    EXPECT_EQ(FindLine(WithoutReturns(end.output), "FLAC "), "FLAC install the plug-in 'sndfile'");
}

TEST_F(Listings, PluginsTellWhatBecameOfEachFile) {
    const CPluginFolder folder;
    folder.Add("recorded");
    folder.Add("raising");
    folder.Add("depending");
    WriteFile(folder.PathOf("words"), "no library");
    const std::string table = PrintOf(folder, "plugins");
    EXPECT_TRUE(Has(FindLine(table, folder.GetFolder().string()), "searched")) << table;
    EXPECT_TRUE(Has(FindLine(table, "recorded "),
                    "recorded 2.5 MIT loaded: 1 class, 1 decoder, 1 encoder, 1 device "))
        << table;
    EXPECT_TRUE(Has(FindLine(table, "raising "),
                    "an entry raised an exception: CInvalidStateException: Plug-in cannot start"));
    EXPECT_TRUE(Has(FindLine(table, "depending "), "a library that it needs is missing: plugin_dependency"));
    EXPECT_TRUE(Has(table, "it is no shared library, or a damaged one"));
    EXPECT_TRUE(Has(table, "words"));
    const std::string json = PrintOf(folder, "plugins", {"--json"});
    for (const char* const outcome : {"loaded", "raised", "missing-library", "no-plugin"})
        EXPECT_TRUE(Has(json, JsonLine("outcome", '"' + std::string(outcome) + '"'))) << outcome;
    EXPECT_TRUE(Has(json, JsonLine("libraries", "\"libone 1.0, libtwo 2.0\"")));
    EXPECT_TRUE(Has(json, JsonLine("type", "\"CInvalidStateException\"")));
    EXPECT_TRUE(Has(json, JsonLine("loads", "1")));
}

TEST_F(Listings, WithoutAPluginThePluginsSaySo) {
    const TChildEnd end = Run({"plugins"});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_TRUE(Has(end.output, "There is no plug-in in these folders; --plugin-path names another one"));
}

TEST_F(Listings, VersionTellsBuildPluginsAndTheirLibraries) {
    const CPluginFolder folder;
    folder.Add("recorded");
    const std::vector<std::string> where{"--no-plugins", "--plugin-path", folder.GetFolder().string()};
    std::vector<std::string> arguments = where;
    arguments.insert(arguments.end(), {"--version", "-v"});
    const std::string text = Print(arguments);
    EXPECT_TRUE(text.starts_with("vorlund " VORLUND_VERSION_STRING "\nBuild     ")) << text;
    EXPECT_TRUE(Has(text, "Plug-in   recorded 2.5, MIT, with libone 1.0, libtwo 2.0, ")) << text;
    // In either order, and short without.
    arguments = where;
    arguments.insert(arguments.end(), {"-v", "--version"});
    EXPECT_EQ(Print(arguments), text);
    EXPECT_EQ(Print({"--version"}), "vorlund " VORLUND_VERSION_STRING "\n");
}

// Plug-ins.

TEST_F(Listings, PluginThatRaisesIsALineAndNothingElse) {
    const CPluginFolder folder;
    folder.Add("raising");
    const TChildEnd end = Run({"--plugin-path", folder.GetFolder().string(), "random", "4", "-o", At("out")});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(Load("out").size(), 4U);
    EXPECT_TRUE(Has(end.errors, "is left out: an entry raised an exception: CInvalidStateException: Plug-in "
                                "cannot start\n"))
        << end.errors;
}

TEST_F(Listings, PluginPathMayStandBehindTheCommand) {
    const CPluginFolder folder;
    folder.Add("recorded");
    const std::string path = folder.GetFolder().string();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--no-plugins", "--plugin-path", path, "plugins"},
          {"plugins", "--no-plugins", "--plugin-path", path},
          {"--no-plugins", "plugins", "--plugin-path", path, "--plugin-path=" + path + "/"}}) {
        const std::string json = Print([&] {
            std::vector<std::string> all = arguments;
            all.push_back("--json");
            return all;
        }());
        EXPECT_TRUE(Has(json, JsonLine("name", "\"recorded\""))) << json;
        // The same folder by another name is not searched again.
        EXPECT_TRUE(Has(json, JsonLine("loads", "1"))) << json;
    }
}

TEST_F(Listings, PluginPathThatIsNoFolderIsAWarning) {
    const TChildEnd end = Run({"random", "1", "-o", At("out"), "--plugin-path", At("nowhere")});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "vorlund: warning: the plug-in path '" + At("nowhere") + "' is no folder\n");
}

TEST_F(Listings, PluginsOfTheBuildAreFound) {
    const std::string json = Print({"plugins", "--json"});
    EXPECT_EQ(Has(json, "vorlund-plugins"), exists(BesideProgram("vorlund-plugins"))) << json;
    const std::string none = WithoutReturns(Run({"plugins", "--json"}).output);
    EXPECT_FALSE(Has(none, "vorlund-plugins")) << none;
}

// Words.

TEST_F(Listings, UnknownWordsGetASuggestion) {
    const struct {
        std::vector<std::string> arguments;
        std::string line;
    } rows[] = {
        {{"decod"},
         "There is no command and no file 'decod'; did you mean 'decode'? --help lists the commands"},
        {{"deocde", "x"},
         "There is no command and no file 'deocde'; did you mean 'decode'? --help lists the commands"},
        {{"plugin"},
         "There is no command and no file 'plugin'; did you mean 'plugins'? --help lists the commands"},
        {{"codec", "--json"},
         "There is no command and no file 'codec'; did you mean 'codecs'? --help lists the commands"},
        {{"Random", "5"},
         "There is no command and no file 'Random'; did you mean 'random'? --help lists the commands"},
        {{"frobnicate"}, "There is no command and no file 'frobnicate'; --help lists the commands"},
        {{""}, "There is no command and no file ''; --help lists the commands"},
        {{"decode", "--foramt", "s16"},
         "There is no option '--foramt'; did you mean '--format'? --help tells the options"},
        {{"--plugin-pat=x", "random", "1"},
         "There is no option '--plugin-pat=x'; did you mean '--plugin-path'? --help tells the options"},
        {{"decode", "-x.wav"},
         "There is no option '-x.wav'; a file of that name is './-x.wav'; --help tells the options"},
        {{"--frob"}, "There is no option '--frob'; --help tells the options"},
    };
    for (const auto& row : rows) {
        const TChildEnd end = Run(row.arguments);
        EXPECT_EQ(end.exitCode, 2U) << row.line;
        EXPECT_EQ(end.output, "") << row.line;
        EXPECT_EQ(end.errors, "vorlund: " + row.line + "\n");
    }
}

class ImpliedDecode : public DecodeCommand {};

TEST_F(ImpliedDecode, FileAloneIsDecoded) {
    const std::string input = Make("in.wav", PlainWav({}, Ramp(80)));
    const TChildEnd end = Run({input, "-o", At("out.pcm")});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(Load("out.pcm"), Ramp(80));
    EXPECT_EQ(WithoutReturns(end.output), WithoutReturns(Decode({input, "-o", At("out.pcm")}).output));
}

} // namespace
} // namespace vorlund::test
