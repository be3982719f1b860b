#pragma once

#include <vector>

/// The program's icon in the usual sizes, in the form of `CApp::icon`.
std::vector<unsigned long> appIcon();
