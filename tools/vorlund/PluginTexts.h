// What the program says about plug-ins, from the reports of the plug-in store.
#pragma once

#include <vorlund/PluginReport.h>

#include <string>
#include <vector>

/// The reports about files.
std::vector<vorlund::TPluginReport> GetFileReports();

/// The plug-in's own name; that of its file, without the ending, when it tells none.
vorlund::wstring GetPluginTitle(const vorlund::TPluginReport& report);

/// Whether it is a plug-in that was meant to be loaded and was not. Other libraries beside a program, and
/// plug-ins that do not want to be loaded, are none.
bool IsLeftOut(const vorlund::TPluginReport& report);

/// The report of the plug-in of that name that came furthest; null when there is no such file. `reports`
/// keeps it.
const vorlund::TPluginReport* FindPlugin(const std::vector<vorlund::TPluginReport>& reports,
                                         const vorlund::wstring& title);

/// The report of the plug-in that has registered the class first; null for the library's own classes.
const vorlund::TPluginReport* FindBringer(const std::vector<vorlund::TPluginReport>& reports,
                                          vorlund::TPluginItemKind kind, const vorlund::CId& classId);

/// "plug-in 'x'", or "the library" for null.
vorlund::wstring DescribeBringer(const vorlund::TPluginReport* report);

/// One line on the standard error stream for each plug-in that is left out.
void PrintLeftOutPlugins();
