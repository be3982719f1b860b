#include "sequencer/edit/SongClipboard.h"

#include "sequencer/song/CPart.h"

void SongClipboard::add(CPart* part, int track) {
    tracks.push_back(track);
    parts.add(part);
}

void SongClipboard::clear() {
    deleteAll(parts);
    tracks.clear();
}
