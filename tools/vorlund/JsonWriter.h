// Writes JSON (RFC 8259), in ASCII: every other character is escaped, so that no encoding of a terminal or a
// pipe changes it.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>
#include <string>

/// A document that grows. Whoever writes it keeps to the order: a key in front of each value in an object.
class CJsonWriter {
public:
    CJsonWriter& BeginObject() { return Begin('{'); }
    CJsonWriter& EndObject() { return End('}'); }
    CJsonWriter& BeginArray() { return Begin('['); }
    CJsonWriter& EndArray() { return End(']'); }
    /// ASCII without quotation marks.
    CJsonWriter& Key(const char* name);
    /// A lone surrogate, as paths have them, is escaped as it is.
    CJsonWriter& Text(const vorlund::wchar* text);
    CJsonWriter& Text(const char* ascii);
    CJsonWriter& Number(std::int64_t value);
    /// With all its digits; null for what is not finite, which JSON cannot say.
    CJsonWriter& Real(double value);
    CJsonWriter& Flag(bool value);
    CJsonWriter& Null();

    /// The document, with a line end.
    std::string Finish() const { return text_ + '\n'; }

private:
    CJsonWriter& Begin(char bracket);
    CJsonWriter& End(char bracket);
    /// What is in front of a value or a key.
    void Separate();
    void NewLine();

    std::string text_;
    int depth_ = 0;
    bool isFirst_ = true;
    bool isBehindKey_ = false;
};
