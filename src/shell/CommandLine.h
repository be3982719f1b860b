#pragma once

#include "base/CStr.h"

#include <vector>

/// What the program is called with: files to open, or a question that it answers on the terminal.
struct CommandLine {
    std::vector<CStr> files; ///< from the root on
    CStr answer;             ///< to print on standard output; then no window opens
    CStr mistake;            ///< a line for standard error; then neither opens
};

/// `words` are those behind the program's name. What follows "--" are files, whatever their names.
CommandLine readCommandLine(const std::vector<CStr>& words);
