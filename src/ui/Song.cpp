#include "ui/Song.h"

#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"

CSeq* songOf(CQV* host) {
    return static_cast<CSeq*>(host->firstOfType(compSeq));
}

CSeq* playableSongOf(CQV* host) {
    CSeq* song = songOf(host);
    return song && song->getProg() ? song : nullptr;
}
