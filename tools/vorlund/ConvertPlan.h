// Which files become which.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A kind of file that is written. Its name is that of `--type`; the first of its endings is that of files.
struct TWrittenType {
    const char* name;
    std::vector<std::string> endings;
};

/// All of them, "wav" first.
const std::vector<TWrittenType>& GetWrittenTypes();
/// The type of a name by its ending; null for other names.
const TWrittenType* FindTypeOfName(const std::string& name);
const TWrittenType* FindType(const std::string& type);

/// One file to convert; names are UTF-8, "-" for the standard input and output.
struct TConvertJob {
    std::string input;
    std::string output;
    /// Bytes of the input; 0 when they are not known.
    std::uint64_t size = 0;
    /// It lies in a folder that was named, where other files may lie too.
    bool isFound = false;
    /// The output lies in a folder that is made when it is not there.
    bool isInFolder = false;
};

struct TConvertPlan {
    const TWrittenType* type = nullptr;
    std::vector<TConvertJob> jobs;
};

/// \param inputs  files, folders, which are searched with all their folders, and "-"
/// \param output  "-", the name of a file, a folder, or a pattern in which "{name}" stands for the input's
/// name
///                without its ending. Files of a folder keep their place below it.
/// \param type    of `GetWrittenTypes`, or empty: by the ending of the output, else "wav"
///
/// Raises `TProgramError`, also when two inputs would become one output.
TConvertPlan MakeConvertPlan(const std::vector<std::string>& inputs, const std::string& output,
                             const std::string& type);
