#pragma once

class CQV;
class CStr;

namespace presets {

/// Writes all presets into the folders `presetFolder`/Effects/Use, Kits, Arpeggios and Tracks, and
/// all clips and loops into `clipFolder`, each as a file of its name. It works in a song that it
/// adds to the host, which is nobody else's. False if something could not be written. Interface
/// thread.
bool writeLibrary(CQV* host, const CStr& presetFolder, const CStr& clipFolder);

} // namespace presets
