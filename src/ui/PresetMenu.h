#pragma once

#include <functional>

class CPopup;
class CQV;
class CStr;

/// Adds a submenu of the presets of a kind: those that lie beside the program and those of the
/// user's folders, with a submenu for each folder that holds some. `endings` are those of their
/// files, as ".qve|.fxp". `chosen` gets the file that is chosen. Nothing is added without any.
/// Interface thread.
void addPresetMenu(CPopup* popup, const CStr& title, CQV* host, const CStr& endings,
                   const std::function<void(const CStr& path)>& chosen);

/// The folder of presets beside the program. It may be missing.
CStr presetSetFolder();
