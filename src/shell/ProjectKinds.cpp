#include "shell/ProjectKinds.h"

#include "data/demosong/DemoSong.h"
#include "data/demosong/Starters.h"
#include "data/demosong/WaltzSong.h"
#include "engine/CQV.h"
#include "modular/GraphEdits.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Templates.h"

namespace {

template <StarterSong which>
void starter(CSeq* seq) {
    createStarter(seq, which);
}

struct Kind {
    const char *name, *detail;
    void (*create)(CSeq* seq); ///< null: no song
};
constexpr Kind kinds[offeredKinds] = {
    {"Empty Project", "A song without tracks", createEmptyProject},
    {"Default", "A synthesizer with a part to fill", createDefaultProject},
    {"Drum & bass", "A drum kit and a synthesizer", createDrumAndBassProject},
    {"MIDI sequencer", "8 tracks for instruments outside", createMIDISequencerProject},
    {"Multi-track recorder", "8 audio tracks, ready to record", createPortaStudioProject},
    {"Guitar Project", "Drums, and an amplifier to play through", createGuitaristProject},
    {"Modular setup", "Components without a song", nullptr},
    {"Beat", "Club drums, a bass and chords that play", starter<starterBeat>},
    {"Band", "Drums, bass, piano and strings that play", starter<starterBand>},
    {"Late night", "Brushes, upright bass and piano that play", starter<starterLateNight>},
};

} // namespace

const char* projectKindName(int kind) {
    return kinds[kind].name;
}

const char* projectKindDetail(int kind) {
    return kinds[kind].detail;
}

void createProject(CQV* host, int kind) {
    const Standstill still(host);
    startUnlooped(host);
    if (kind == kindDemo)
        buildDemoSong(host);
    else if (kind == kindWaltz)
        buildWaltzSong(host);
    else if (kind >= 0 && kind < offeredKinds && kinds[kind].create) {
        CSeq* seq = addSequencer(host);
        kinds[kind].create(seq);
        frameSong(seq);
    }
    tidyNewGraph(host);
    host->markSaved(host->saveMark());
}
