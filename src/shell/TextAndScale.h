#pragma once

class CIniFile;

/// Tells the toolkit how to draw text and how large everything is to be, from the section
/// "options": "smooth-text" (1; 0 is the server's font), "font" (family; empty is the system's
/// sans), "font-size" (logical pixels; 0 fits the controls), "scale" (percent, 100 to 300 in steps
/// of 25; 0 follows the display's resolution). Comes before the toolkit connects.
void readTextAndScale(CIniFile& ini);
