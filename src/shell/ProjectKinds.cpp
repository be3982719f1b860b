#include "shell/ProjectKinds.h"

#include "data/demosong/DemoSong.h"
#include "engine/CQV.h"
#include "project/SongSounds.h"
#include "sequencer/CSeq.h"
#include "sequencer/Templates.h"

namespace {

struct Kind {
    const char* name;
    void (*create)(CSeq* seq); ///< null: no song
};
constexpr Kind kinds[offeredKinds] = {
    {"Empty Project", createEmptyProject},
    {"Default", createDefaultProject},
    {"Drum & bass", createDrumAndBassProject},
    {"MIDI sequencer", createMIDISequencerProject},
    {"Multi-track recorder", createPortaStudioProject},
    {"Guitar Project", createGuitaristProject},
    {"Modular setup", nullptr},
};

} // namespace

const char* projectKindName(int kind) {
    return kinds[kind].name;
}

void createProject(CQV* host, int kind) {
    const Standstill still(host);
    startUnlooped(host);
    if (kind == kindDemo)
        buildDemoSong(host);
    else if (kind >= 0 && kind < offeredKinds && kinds[kind].create) {
        CSeq* seq = addSequencer(host);
        kinds[kind].create(seq);
        frameSong(seq);
    }
    host->markSaved(host->saveMark());
}
