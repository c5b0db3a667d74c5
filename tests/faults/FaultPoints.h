/// \file
/// Every call of the library that the system may refuse, counted by kind and made to fail.
///
/// The calls are caught in the import tables of the loaded modules: those of the library, its plug-ins, the
/// standard library and the program under test. This program's own calls never count and never fail.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace vorlund::faults {

/// What a call asks of the system.
enum class TFaultKind {
    Memory, ///< memory from the heap
    Open,   ///< files and folders
    Look,   ///< attributes, entries of folders, paths
    Read,
    Write, ///< flushing too
    Seek,  ///< telling too
    Close, ///< the handle is closed, and yet the call reports a failure
    Rename,
    Map,     ///< files in memory
    Thread,  ///< new threads
    Process, ///< new processes, and what they are given
    Load,    ///< modules and their symbols
    Event,   ///< events of the system
    Timer,   ///< timers of the system
    Window,  ///< window classes and windows
};
inline constexpr std::array<const char*, 15> kKindNames{"memory",  "open",  "look",   "read",  "write",
                                                        "seek",    "close", "rename", "map",   "thread",
                                                        "process", "load",  "event",  "timer", "window"};
inline constexpr std::size_t kKindCount = kKindNames.size();

enum class TSpan { Once, FromThenOn };
inline constexpr std::array<const char*, 2> kSpanNames{"once", "on"};

/// A call that can be made to fail.
struct THook {
    const char* name;
    void* replacement;
    /// Where the replacement keeps the real function.
    void** real;
};

/// Catches the imports of every module that is loaded; of modules that are loaded by these, too.
void InstallHooks();

/// Imports of the library, by name, that are neither caught nor known to be unable to fail.
std::vector<std::string> FindUnknownImports();

/// Counts from 0 again, with no fault.
void StartCounting();
/// The same with a fault: the call number `n` of that kind, from 1 on.
void Arm(TFaultKind kind, unsigned int n, TSpan span);
/// Ends the fault and the counting.
void Disarm();
bool IsArmed();
/// What the last fault was armed for.
TFaultKind GetArmedKind();
/// Whether the fault has occurred since it was armed.
bool HasFailed();
/// Calls of that kind since the counting began.
unsigned int GetCount(TFaultKind kind);
/// The call that failed first, as a module and an offset into it.
std::string DescribeFault();

/// Blocks of memory that the caught modules hold.
std::size_t CountBlocks();
/// The number that the next block gets.
std::size_t GetNextBlock();
/// A line for every block from that number on that is still there.
std::vector<std::string> DescribeBlocksSince(std::size_t first);

/// Keeps the calls of this thread from counting and failing.
class CPause {
public:
    CPause();
    CPause(const CPause&) = delete;
    CPause& operator=(const CPause&) = delete;
    ~CPause();
};

// For the hooks.

/// Counts a call; true when it must fail.
bool MustFail(TFaultKind kind, const void* caller);
void NoteBlock(void* address, std::size_t size, const void* caller);
void ForgetBlock(void* address);

// What each system supplies.

/// The calls of this system that can be made to fail.
const std::vector<THook>& GetHooks();
/// Imports of the library that cannot fail, or only by a fault of the caller.
bool CannotFail(const std::string& import);
/// Puts the replacements into the import tables of what is loaded now.
void PatchModules();
/// The names of everything that the library itself imports.
std::vector<std::string> GetLibraryImports();
std::string DescribeAddress(const void* address);

} // namespace vorlund::faults
