#include "ui/Song.h"

#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "sequencer/song/CSeq.h"

CSeq* songOf(CQV* host) {
    return compAs<CSeq>(host->firstOfType(compSeq));
}

CSeq* playableSongOf(CQV* host) {
    CSeq* song = songOf(host);
    return song && song->getProg() ? song : nullptr;
}
