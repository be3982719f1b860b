#pragma once

#include "base/CStr.h"

#include <string>
#include <string_view>
#include <vector>

/// The files of a list as file managers pass it (RFC 2483): a URI in each line, "#" before a
/// remark. The paths of all that are files of this machine, with their percent signs decoded; the
/// rest is left out.
std::vector<CStr> pathsOfUriList(std::string_view list);
/// The path of one URI; empty when it is no file of this machine, or has a 0 byte in it.
std::string pathOfUri(std::string_view uri);
