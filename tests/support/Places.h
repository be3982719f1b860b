#pragma once

#include <string>

// Where things lie that the tests run or read.

std::string builtFile(const std::string& path);  ///< below the build folder, such as "bin/sondrava"
std::string sourceFile(const std::string& path); ///< below the folder of the sources
