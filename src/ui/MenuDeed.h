#pragma once

#include "base/CStr.h"

#include <functional>

class CMenuItem;
class CPopup;

/// An entry of a menu that does `deed` when it is chosen.
CMenuItem* addDeed(CPopup* popup, const CStr& text, std::function<void()> deed);
