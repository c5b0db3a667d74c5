// Text, lines and typed values in files, and strings in memory.
#include "faults/Scenario.h"

#include <vorlund/CharFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/LineReader.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/String.h>
#include <vorlund/TextReader.h>
#include <vorlund/TextWriter.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

namespace vorlund::faults {

void RunText(CResult& result) {
    {
        CTextWriter writer(COutputStreamSelector(files.output.c_str()).GetOutputStreamTmp(),
                           CHAR_FORMAT_UTF16, LINE_BREAK_CRLF);
        for (int i = 0; i < 20; ++i) writer.Write(VRL_L("line %d of %s\n"), i, VRL_L("many"));
    }
    {
        CTextReader reader(CInputStreamSelector(files.output.c_str()).GetInputStreamTmp(), CHAR_FORMAT_UTF16);
        for (int i = 0; i < 3; ++i) {
            try {
                reader.ReadLine();
            } catch (const CObjectNotFoundException&) {
                // Every line ends so.
                result.Add("line, ");
            }
        }
        result.Add("%d, ", reader.Eof());
    }
    CLineReader lines(CInputStreamSelector(files.text.c_str()).GetInputStreamTmp(), CHAR_FORMAT_8BIT);
    int count = 0;
    for (CString line; lines.ReadLine(line); ++count)
        if (count == 7) result.AddText(line);
    result.Add("%d lines", count);
}

void RunStrings(CResult& result) {
    CString text(VRL_L("  one, two, three  "));
    text.Trim();
    text += VRL_L(", four");
    text = text + "-" + VRL_L("five");
    try {
        text.Replace(VRL_L("two"), VRL_L("2"));
    } catch (const CObjectNotFoundException&) {
        // So it ends when nothing is left to replace.
    }
    result.AddText(text);
    result.Add("%u %d ", text.FindFirst(VRL_L("four")), text.CompareToIgnoreCase(VRL_L("ONE")));
    result.AddText(text.SubStr(0, 3));
    CString copy;
    copy.Allocate(50);
    copy = text.SubStr(2, 6);
    result.AddText(copy);
}

void RunRecordsWrite(CResult& result) {
    {
        CVarWriter writer(COutputStreamSelector(files.output.c_str()).GetOutputStreamTmp());
        for (int i = 0; i < 3; ++i)
            writer << i << 2.5 << true << CString("text of a record") << VRL_L("another");
        result.Add("at %llu ", static_cast<unsigned long long>(writer.Tell()));
        writer.Seek(4);
        writer << 3.5;
    }
    CVarReader reader(CInputStreamSelector(files.output.c_str()).GetInputStreamTmp());
    int number = -1;
    double real = 0;
    reader >> number >> real;
    result.Add("%d %g", number, real);
}

void RunRecordsRead(CResult& result) {
    CVarReader reader(CInputStreamSelector(files.records.c_str()).GetInputStreamTmp());
    while (!reader.Eof()) {
        int number = -1;
        double real = -1;
        CString text;
        const std::uint64_t position = reader.Tell();
        reader >> number >> real >> text;
        result.Add("%d %g ", number, real);
        result.AddText(text);
        // What delivers nothing would be tried for ever.
        if (reader.Tell() == position) break;
    }
    reader.Seek(4);
    double real = 0;
    reader >> real;
    result.Add("%g", real);
}

} // namespace vorlund::faults
