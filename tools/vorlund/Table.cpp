#include "Table.h"

#include <vorlund/Debug.h>

#include <algorithm>

using namespace vorlund;

namespace {

constexpr std::size_t kGap = 2;

} // namespace

void PrintTable(const std::vector<TRow>& rows) {
    std::vector<std::size_t> widths;
    for (const TRow& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    for (const TRow& row : rows) {
        wstring line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            line.append(widths[i] - row[i].size() + kGap, VRL_L(' '));
        }
        line.erase(line.find_last_not_of(VRL_L(' ')) + 1);
        PrintLine(line);
    }
}

void PrintLine(const wstring& line) {
    CDebug::PrintMessage(DEBUG_MESSAGE_STDOUT, VRL_L("%s"), line.c_str());
}
