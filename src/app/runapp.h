#pragma once

/// Runs the program until its window closes; returns the process's exit status. Without a display
/// it says so on standard error and returns 1.
int runapp();
