#pragma once

#include "base/CStr.h"
#include "base/CStringList.h"

#include <functional>

/// Outside programs are started by an argument vector, whose first is the program, found through
/// PATH. They see no open files of ours but the standard three.

/// Runs a program to its end and returns its exit status: 127 if it cannot be started, 128 and the
/// signal if one ended it.
int runProcess(const CStringList& argv);
/// The same; asks `goOn` a hundred times a second, and ends the program once that says false.
int runProcess(const CStringList& argv, const std::function<bool()>& goOn);
/// Starts a program and goes on; false if it cannot be started.
bool startProcess(const CStringList& argv);

/// Lets this process have as many files open as the system grants it, up to `mostOpenFiles`: a
/// project plays each of its samples from a file of its own, and what is inherited is often 1024.
/// At the start of a program.
void raiseFileLimit();
constexpr int mostOpenFiles = 65536;

bool showFolder(const CStr& path); ///< in the user's file manager
bool openURL(const CStr& url);     ///< in the user's browser
