/// \file
/// Runs of `CString` operations against a model: a standard-library wide string, and for replacement and
/// removal the loop that starts again from the front after each edit.
#include "FuzzInput.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

namespace fuzz = vorlund::fuzz;
using vorlund::CString;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::fuzz::Check;

/// The model's answers for a call that never ends, and for one that it gave up.
constexpr int kEndless = -1;
constexpr int kUnknown = -2;

/// What this target draws from an input.
class CStringInput : public fuzz::CInput {
public:
    using CInput::CInput;

    int Number() { return static_cast<signed char>(Byte()); }

    /// Mostly one of few letters, so that needles are found; sometimes any unit but 0.
    wchar Unit() {
        const unsigned int byte = Byte();
        if (byte < 0xF0) return static_cast<wchar>('a' + byte % 3);
        const unsigned int unit = byte << 8 | Byte();
        return static_cast<wchar>(unit == 0xF000   ? ' '
                                  : unit == 0xF001 ? '\r'
                                  : unit & 0x800   ? unit
                                                   : unit & 0xFF);
    }

    wstring Text(std::size_t longest) {
        wstring text(Byte() % (longest + 1), 0);
        for (wchar& unit : text) unit = Unit();
        // Zeros come from the end of the input or from low bytes; a text ends there.
        return text.c_str();
    }
};

/// The bytes that widen to `text`; units that none does become 'a', in `text` too.
std::string Narrowed(wstring& text) {
    std::string bytes;
    for (wchar& unit : text) {
        if (unit >= 0x80 && unit < 0xFF80) unit = 'a';
        bytes += static_cast<char>(unit);
    }
    return bytes;
}

/// The loop; gives the line of the search that ends it, 0 when it returns.
int Loop(wstring& text, const wstring& from, const wstring& to) {
    if (from.empty()) return kEndless;
    if (text.find(from) != wstring::npos && to.find(from) != wstring::npos) return kEndless;
    wstring edited = text;
    const int maxEdits = text.size() > 1000 ? 40 : 300;
    for (int edits = 0; edits < maxEdits; ++edits) {
        const std::size_t place = edited.find(from);
        if (place == wstring::npos) {
            text = edited;
            return from.size() > text.size() ? 0 : 155;
        }
        edited = edited.substr(0, place) + to + edited.substr(place + from.size(), 65535);
    }
    return kUnknown;
}

/// The line of the exception that `act` raises, 0 for none.
template <class TAct> int EndOf(const TAct& act) {
    try {
        act();
    } catch (const vorlund::CObjectNotFoundException& exception) {
        return exception.GetLine();
    } catch (const vorlund::CInvalidParameterException&) {
        return kEndless;
    }
    return 0;
}

/// Compares an edit with its model. What was given up must leave one of the two clear answers.
void CheckEdit(CString& text, wstring& model, int end, int expected) {
    if (expected == kUnknown)
        model = text.GetBuffer();
    else
        Check(end == expected);
}

int Sign(int order) {
    return order < 0 ? -1 : order > 0;
}

template <class TUnit>
void CheckSearch(const CString& text, const wstring& model, const TUnit* needle, const wstring& wide,
                 bool isNarrow) {
    const bool isTooLong = wide.size() > model.size();
    unsigned int place = 0;
    const int firstEnd = EndOf([&] { place = text.FindFirst(needle); });
    const std::size_t first = model.find(wide);
    if (isTooLong)
        Check(isNarrow ? firstEnd == 163 : firstEnd == 0 && place == 0xFFFFFFFF);
    else if (first == wstring::npos)
        Check(firstEnd == (isNarrow ? 169 : 155));
    else
        Check(firstEnd == 0 && place == first);
    const int lastEnd = EndOf([&] { place = text.FindLast(needle); });
    const std::size_t last = model.rfind(wide);
    if (isTooLong)
        Check(lastEnd == 0 && place == 0xFFFFFFFF);
    else if (last == wstring::npos)
        Check(lastEnd == (isNarrow ? 206 : 192));
    else
        Check(lastEnd == 0 && place == last);
}

void CheckUnitSearch(const CString& text, const wstring& model, wchar unit) {
    unsigned int place = 0;
    const std::size_t first = unit ? model.find(unit) : model.size();
    const int firstEnd = EndOf([&] { place = text.FindFirst(unit); });
    Check(first == wstring::npos ? firstEnd == 141 : firstEnd == 0 && place == first);
    const std::size_t last = unit ? model.rfind(unit) : model.size();
    const int lastEnd = EndOf([&] { place = text.FindLast(unit); });
    Check(last == wstring::npos ? lastEnd == 178 : lastEnd == 0 && place == last);
}

void CheckRange(CString& text, wstring& model, int start, int count, bool isRemoved) {
    const int length = static_cast<int>(model.size());
    int first = start < 0 ? std::max(length + start, 0) : std::min(start, length);
    int end = count < 0 ? std::max(length + count, first) : std::min(first + count, length);
    if (start >= length) first = end = length;
    const auto from = static_cast<std::size_t>(first);
    const auto size = static_cast<std::size_t>(end - first);
    Check(wstring(text.SubStr(start, count)) == model.substr(from, size));
    if (!isRemoved) return;
    text.Remove(start, count);
    if (size) model = model.substr(0, from) + model.substr(from + size, 65535);
}

void CheckCopies(const CString& text, const wstring& model, int size) {
    wstring wide(300, '#');
    std::string narrow(300, '#');
    text.ToWideChar(wide.data(), size);
    text.ToChar(narrow.data(), size);
    const std::size_t copied =
        size < 1 ? 0 : std::min<std::size_t>(model.size(), static_cast<std::size_t>(size) - 1);
    for (std::size_t i = 0; i < copied; ++i) {
        Check(wide[i] == model[i]);
        Check(static_cast<unsigned char>(narrow[i]) == (model[i] & 0xFF));
    }
    Check(size < 1 ? wide[0] == '#' && narrow[0] == '#' : wide[copied] == 0 && narrow[copied] == 0);
    Check(wide[copied + 1] == '#' && narrow[copied + 1] == '#');
}

void CheckElement(const CString& text, const wstring& model, int index) {
    const int length = static_cast<int>(model.size());
    const int place = index < 0 ? index + length : index;
    const wchar expected = place >= 0 && place < length ? model[static_cast<std::size_t>(place)] : wchar{0};
    Check(text[index] == expected);
    if (index >= 0) Check(text[static_cast<unsigned int>(index)] == expected);
}

void CheckOrder(const CString& text, const wstring& model, const CString& other, const wstring& otherModel) {
    const int order = Sign(model.compare(otherModel));
    Check(text.CompareTo(other.GetBuffer()) == order);
    Check((text == other) == (order == 0));
    // Upper-casing keeps equal what is equal, and is the same from both sides.
    const int ignoringCase = text.CompareToIgnoreCase(other.GetBuffer());
    Check(other.CompareToIgnoreCase(text.GetBuffer()) == -ignoringCase);
    if (order == 0) Check(ignoringCase == 0);
}

void Trim(wstring& model) {
    const wchar trimmed[] = {10, 13, 32, 0};
    const std::size_t first = model.find_first_not_of(trimmed);
    if (first == wstring::npos)
        model.clear();
    else
        model = model.substr(first, model.find_last_not_of(trimmed) + 1 - first);
}

void Step(CStringInput& input, CString& text, wstring& model) {
    switch (input.Byte() % 20) {
    case 0:
        model = input.Text(60);
        text = model.c_str();
        break;
    case 1: {
        wstring added = input.Text(20);
        const std::string bytes = Narrowed(added);
        text += bytes.c_str();
        model += added;
        break;
    }
    case 2: {
        const wstring added = input.Text(60);
        Check(wstring(text + added.c_str()) == model + added);
        text += added.c_str();
        model += added;
        break;
    }
    case 3: {
        // A long run, so that tails come near 65535 units; not often, it takes long.
        if (input.Byte() % 4) break;
        const wstring run(65400 + input.Byte(), '-');
        const wstring back = input.Text(20);
        if (model.size() > 70000) break;
        text += (run + back).c_str();
        model += run + back;
        break;
    }
    case 4: {
        const wchar from = input.Unit();
        const wchar to = input.Unit();
        text.Replace(from, to);
        if (from) std::replace(model.begin(), model.end(), from, to);
        model = model.c_str();
        break;
    }
    case 5:
    case 6: {
        const wstring from = input.Text(5);
        const wstring to = input.Text(6);
        const int expected = Loop(model, from, to);
        // What the model gives up takes the library long, too.
        if (expected == kUnknown && input.Byte() % 8) break;
        CheckEdit(text, model, EndOf([&] { text.Replace(from.c_str(), to.c_str()); }), expected);
        break;
    }
    case 7: {
        const wstring removed = input.Text(5);
        const int expected = Loop(model, removed, wstring());
        CheckEdit(text, model, EndOf([&] { text -= removed.c_str(); }), expected);
        break;
    }
    case 8: {
        wstring removed = input.Text(5);
        const std::string bytes = Narrowed(removed);
        int expected = Loop(model, removed, wstring());
        if (expected >= 0) expected = expected ? 169 : 163;
        CheckEdit(text, model, EndOf([&] { text.Remove(bytes.c_str()); }), expected);
        break;
    }
    case 9: {
        const wchar removed = input.Unit();
        int expected = removed ? Loop(model, wstring(1, removed), wstring()) : kEndless;
        if (expected >= 0) expected = 141;
        CheckEdit(text, model, EndOf([&] { text.Remove(removed); }), expected);
        break;
    }
    case 10: {
        const int start = input.Number();
        const int count = input.Number();
        CheckRange(text, model, start, count, true);
        break;
    }
    case 11: {
        const int start = input.Number();
        const int count = input.Number();
        CheckRange(text, model, start, count, false);
        break;
    }
    case 12:
        text.Trim();
        Trim(model);
        break;
    case 13: {
        wstring needle = input.Text(6);
        CheckSearch(text, model, needle.c_str(), needle, false);
        const std::string bytes = Narrowed(needle);
        CheckSearch(text, model, bytes.c_str(), needle, true);
        break;
    }
    case 14:
        CheckUnitSearch(text, model, input.Unit());
        break;
    case 15: {
        const wstring other = input.Text(60);
        const CString otherText(other.c_str());
        CheckOrder(text, model, otherText, other);
        CheckOrder(text, model, text, model);
        break;
    }
    case 16:
        CheckCopies(text, model, input.Number());
        break;
    case 17:
        CheckElement(text, model, input.Number());
        break;
    case 18: {
        // A zero unit in the middle shortens the text.
        const std::size_t place = input.Byte();
        if (place >= model.size()) break;
        text[static_cast<unsigned int>(place)] = 0;
        model.resize(place);
        break;
    }
    default: {
        // Arguments that are parts of the text itself.
        const std::size_t from = model.empty() ? 0 : input.Byte() % model.size();
        const std::size_t to = model.empty() ? 0 : input.Byte() % model.size();
        const wstring fromText = model.substr(from);
        const wstring toText = model.substr(to);
        const wchar* units = text.GetBuffer();
        // The model's search takes long for long needles.
        switch (model.size() > 2000 ? 0 : input.Byte() % 4) {
        case 0:
            text = units + from;
            model = fromText;
            break;
        case 1:
            text += units + from;
            model += fromText;
            break;
        case 2: {
            const int expected = Loop(model, fromText, toText);
            CheckEdit(text, model, EndOf([&] { text.Replace(units + from, units + to); }), expected);
            break;
        }
        default: {
            const int expected = Loop(model, fromText, wstring());
            CheckEdit(text, model, EndOf([&] { text.Remove(units + from); }), expected);
            break;
        }
        }
    }
    }
    Check(text.Length() == model.size());
    Check(std::equal(model.begin(), model.end(), text.GetBuffer()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Failures are frequent here, and their messages have no reader.
    vorlund::CDebug::SetHandler(
        vorlund::DEBUG_MESSAGE_OUTPUT, [](vorlund::TDebugMessageType, const wchar*, void*) {}, nullptr);
    CStringInput input(data, size);
    CString text;
    wstring model;
    for (int steps = 0; !input.IsEmpty() && steps < 40; ++steps) Step(input, text, model);
    return 0;
}
