#include "base/Denormals.h"
#include "data/generalmidi/GeneralMidi.h"
#include "engine/CQV.h"
#include "tools/soundtable/SoundFigures.h"

#include <cstdio>
#include <memory>

// sondrava-makeset FOLDER: writes the General MIDI set.

int main(int argc, char** argv) {
    if (argc != 2) return 1;
    flushDenormals();
    const auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(256);
    host->setRate(soundtable::probeRate);
    if (gm::writeSoundSet(host.get(), argv[1])) return 0;
    std::fprintf(stderr, "sondrava-makeset: %s: cannot be written\n", argv[1]);
    return 1;
}
