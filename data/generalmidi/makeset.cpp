#include "base/Denormals.h"
#include "base/Paths.h"
#include "data/generalmidi/GeneralMidi.h"
#include "data/presets/Library.h"
#include "engine/CQV.h"
#include "project/CompTable.h"
#include "tools/soundtable/SoundFigures.h"

#include <cstdio>
#include <memory>

// sondrava-makeset FOLDER: writes the General MIDI set into FOLDER/sounds, the presets into
// FOLDER/presets, clips and loops into FOLDER/clips.

int main(int argc, char** argv) {
    if (argc != 2) return 1;
    flushDenormals();
    enterCompTypes();
    const auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(256);
    host->setRate(soundtable::probeRate);
    const CStr to = addSep(argv[1]);
    if (gm::writeSoundSet(host.get(), to + "sounds") &&
        presets::writeLibrary(host.get(), to + "presets", to + "clips"))
        return 0;
    std::fprintf(stderr, "sondrava-makeset: %s: cannot be written\n", argv[1]);
    return 1;
}
