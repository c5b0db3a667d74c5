// Lists for people: rows of texts, in columns as wide as they must be.
#pragma once

#include <vorlund/Platform.h>

#include <vector>

using TRow = std::vector<vorlund::wstring>;

/// Prints the rows on the standard output, the first one as the heads of the columns. All have as many texts.
void PrintTable(const std::vector<TRow>& rows);

/// Prints a line on the standard output.
void PrintLine(const vorlund::wstring& line);
