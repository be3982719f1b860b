#pragma once

#include "gui/Fonts.h"

/// The server's default font, else "fixed", else any; null when it has none. Each byte of a text is
/// a character of Latin-1. Its pixels grow with the scale, as the server's own fonts need not. It
/// has no small size, and its large one is twice as large.
std::unique_ptr<TextFace> openServerFace(const TextLook& look);
