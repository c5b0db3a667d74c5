#include "JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>

using namespace vorlund;

CJsonWriter& CJsonWriter::Key(const char* name) {
    Separate();
    text_ += '"';
    text_ += name;
    text_ += "\": ";
    isBehindKey_ = true;
    return *this;
}

CJsonWriter& CJsonWriter::Text(const wchar* text) {
    Separate();
    text_ += '"';
    for (; *text; ++text) {
        const auto unit = static_cast<std::uint16_t>(*text);
        if (unit == '"' || unit == '\\') {
            text_ += '\\';
            text_ += static_cast<char>(unit);
        } else if (unit >= ' ' && unit < 0x7F) {
            text_ += static_cast<char>(unit);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned int>(unit));
            text_ += escaped;
        }
    }
    text_ += '"';
    return *this;
}

CJsonWriter& CJsonWriter::Text(const char* ascii) {
    const std::string text = ascii;
    return Text(wstring(text.begin(), text.end()).c_str());
}

CJsonWriter& CJsonWriter::Number(std::int64_t value) {
    Separate();
    text_ += std::to_string(value);
    return *this;
}

CJsonWriter& CJsonWriter::Real(double value) {
    if (!std::isfinite(value)) return Null();
    Separate();
    char text[32];
    text_.append(text, std::to_chars(text, std::end(text), value).ptr);
    return *this;
}

CJsonWriter& CJsonWriter::Flag(bool value) {
    Separate();
    text_ += value ? "true" : "false";
    return *this;
}

CJsonWriter& CJsonWriter::Null() {
    Separate();
    text_ += "null";
    return *this;
}

CJsonWriter& CJsonWriter::Begin(char bracket) {
    Separate();
    text_ += bracket;
    ++depth_;
    isFirst_ = true;
    return *this;
}

CJsonWriter& CJsonWriter::End(char bracket) {
    --depth_;
    if (!isFirst_) NewLine();
    text_ += bracket;
    isFirst_ = false;
    return *this;
}

void CJsonWriter::Separate() {
    if (isBehindKey_) {
        isBehindKey_ = false;
        return;
    }
    if (!isFirst_) text_ += ',';
    if (depth_ > 0) NewLine();
    isFirst_ = false;
}

void CJsonWriter::NewLine() {
    text_ += '\n';
    text_.append(static_cast<std::size_t>(depth_) * 2, ' ');
}
