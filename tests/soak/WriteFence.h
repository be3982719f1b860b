#pragma once

#include <string>

/// From now on this process and those that it starts can write, make and remove files below
/// `folder` and /dev alone. False if the system cannot do that (Linux before 5.13).
bool fenceWrites(const std::string& folder);
