#include "project/FileFacts.h"

#include "audiofiles/AudioImport.h"
#include "project/ClipLength.h"
#include "sequencer/midi/MidiLength.h"

FileFacts factsOf(const CStr& path, bool byName) {
    FileFacts facts;
    facts.kind = songFileOf(path);
    if (byName) return facts;
    facts.known = true;
    if (facts.kind == SongFile::audio) {
        const AudioLength length = audioLength(path);
        facts.seconds = length.seconds;
        facts.channels = length.channels;
    }
    if (facts.kind == SongFile::midi) facts.ticks = midiLength(path);
    if (facts.kind == SongFile::clip) {
        const ClipLength length = clipLength(path);
        facts.seconds = length.seconds;
        facts.ticks = length.ticks;
    }
    return facts;
}

FactReader::FactReader(std::vector<CStr> files) : paths(std::move(files)) {
    for (const CStr& path : paths) byName.push_back(factsOf(path, true));
    read.resize(paths.size());
    start();
}

FactReader::~FactReader() {
    finish();
}

FileFacts FactReader::facts(int index) const {
    return index < count() ? read[size_t(index)] : byName[size_t(index)];
}

void FactReader::execute() {
    for (size_t i = 0; i < paths.size() && !terminated; i++) {
        read[i] = factsOf(paths[i], false);
        done.storeRelease(int(i) + 1);
    }
}
