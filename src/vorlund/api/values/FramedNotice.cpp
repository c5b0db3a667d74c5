#include "vorlund/api/values/FramedNotice.h"

#include "vorlund/api/text/Utf8.h"

#include <algorithm>

namespace vorlund {
namespace {

constexpr int kMinColumns = 24;
constexpr int kMaxColumns = 78;

/// "| " and " |".
constexpr int kBorders = 4;

void AppendBlanks(std::pmr::string& out, int count) {
    for (; count > 0; --count) out += ' ';
}

int CountCodePoints(const wchar* text) {
    int count = 0;
    while (NextCodePoint(text) != 0) ++count;
    return count;
}

/// Control characters of both sets, DEL, and the characters that turn the direction of writing.
bool IsCommand(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

/// The text of one row: from `begin` to `end`, `count` code points; `next` begins the next row.
struct TRow {
    const wchar* begin;
    const wchar* end;
    const wchar* next;
    int count;
};

TRow TakeRow(const wchar* text, int width) {
    TRow blank{text, nullptr, nullptr, 0};
    const wchar* at = text;
    for (int count = 0;; ++count) {
        const wchar* const here = at;
        const char32_t code = NextCodePoint(at);
        if (code == 0) return {text, here, here, count};
        if (code == '\n') return {text, here, at, count};
        if (code == ' ') blank = {text, here, at, count};
        // A word that is longer than a row is cut.
        if (count == width) return blank.end ? blank : TRow{text, here, here, count};
    }
}

class CFrame {
public:
    CFrame(std::pmr::string& out, int columns)
        : out_(out), width_(std::clamp(columns, kMinColumns, kMaxColumns) - kBorders) {}

    int GetWidth() const { return width_; }

    /// The upper or lower edge, with `caption` in it.
    void AppendEdge(const wchar* caption) {
        int rest = width_ + 2;
        out_ += '+';
        if (*caption) {
            out_ += "- ";
            AppendUtf8(out_, caption);
            out_ += ' ';
            rest -= CountCodePoints(caption) + 3;
        }
        for (; rest > 0; --rest) out_ += '-';
        out_ += "+\r\n";
    }

    void AppendRow(const TRow& row) {
        out_ += "| ";
        const wchar* at = row.begin;
        while (at != row.end) {
            const char32_t code = NextCodePoint(at);
            AppendUtf8(out_, IsCommand(code) ? U'?' : code);
        }
        AppendBlanks(out_, width_ - row.count);
        out_ += " |\r\n";
    }

private:
    std::pmr::string& out_;
    int width_;
};

} // namespace

void AppendFramedNotice(std::pmr::string& out, const wchar* caption, const wchar* text, int columns,
                        bool hasButton) {
    CFrame frame(out, columns);
    out += "\r\n";
    frame.AppendEdge(caption);
    do {
        const TRow row = TakeRow(text, frame.GetWidth());
        frame.AppendRow(row);
        text = row.next;
    } while (*text);
    if (hasButton) {
        constexpr const wchar* kButton = VRL_L("[ OK ]  press Enter");
        frame.AppendRow({kButton, kButton, kButton, 0});
        frame.AppendRow(TakeRow(kButton, frame.GetWidth()));
    }
    frame.AppendEdge(VRL_L(""));
}

} // namespace vorlund
