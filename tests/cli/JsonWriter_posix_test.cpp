// What the program writes as JSON, read by somebody else: the reader of Python.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"

#include "vorlund/JsonWriter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace vorlund::test {
namespace {

/// Runs lines of Python over the document, which is `document` there; what they print.
std::string RunPython(const std::string& json, const std::string& script) {
    const CTemporaryFolder folder;
    WriteFile(folder.GetPath() / "document", json);
    WriteFile(folder.GetPath() / "script",
              "import json, sys\ndocument = json.load(open(sys.argv[1]))\n" + script);
    const std::string base = folder.GetPath().string();
    const std::string command =
        "'" VORLUND_TEST_PYTHON "' '" + base + "/script' '" + base + "/document' >'" + base + "/output' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadFile(folder.GetPath() / "output");
    return ReadFile(folder.GetPath() / "output");
}

TEST(JsonWriter, EveryUnitComesBack) {
    wstring text;
    for (unsigned int unit = 1; unit < 0x10000; ++unit) text += static_cast<wchar>(unit);
    CJsonWriter json;
    json.BeginObject().Key("text").Text(text.c_str()).EndObject();
    const std::string document = json.Finish();
    for (const char byte : document) ASSERT_TRUE(byte == '\n' || (byte >= ' ' && byte < 0x7F));
    // Two units that make one character come back as that.
    EXPECT_EQ(RunPython(document,
                        "units = document['text'].encode('utf-16-le', 'surrogatepass')\n"
                        "print(units == b''.join(i.to_bytes(2, 'little') for i in range(1, 65536)))\n"),
              "True\n");
}

TEST(JsonWriter, ValuesNestAndAreSeparated) {
    CJsonWriter json;
    json.BeginObject().Key("empty").BeginArray().EndArray().Key("none").BeginObject().EndObject();
    json.Key("list").BeginArray().Number(-1).Flag(true).Flag(false).Null().Text("a\"b\\c\n");
    json.BeginObject()
        .Key("x")
        .Number(INT64_MAX)
        .Key("y")
        .Null()
        .EndObject()
        .BeginArray()
        .EndArray()
        .EndArray();
    json.Key("last").Number(0).EndObject();
    EXPECT_EQ(RunPython(json.Finish(),
                        "print(document == {'empty': [], 'none': {}, 'list': [-1, True, False, None, "
                        "'a\"b\\\\c\\n', {'x': 2**63 - 1, 'y': None}, []], 'last': 0})\n"),
              "True\n");
}

TEST(JsonWriter, ListingsOfTheProgramAreJson) {
    for (const char* const command : {"classes", "codecs", "plugins"}) {
        const TChildEnd end = RunChild("vorlund", {.arguments = {command, "--json"}});
        ASSERT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(RunPython(end.output, "print(sorted(document))\n"),
                  command == std::string("classes")  ? "['classes']\n"
                  : command == std::string("codecs") ? "['containers', 'decoders', 'encoders']\n"
                                                     : "['folders', 'plugins']\n");
    }
}

} // namespace
} // namespace vorlund::test
