#include "data/presets/Library.h"

#include "base/Paths.h"
#include "data/presets/ArpPresets.h"
#include "data/presets/Clips.h"
#include "data/presets/Kits.h"
#include "data/presets/PartText.h"
#include "data/presets/RackPresets.h"
#include "data/presets/TrackPresets.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "instruments/CArp.h"
#include "project/ClipFiles.h"
#include "project/PresetFiles.h"
#include "project/SongSounds.h"
#include "project/TrackPreset.h"
#include "sequencer/song/CSeq.h"

#include <memory>
#include <vector>

namespace presets {

namespace {

class Library {
public:
    Library(CQV* root, const CStr& presets, const CStr& clips)
        : host(root), seq(addSequencer(root)), presetFolder(addSep(presets)),
          clipFolder(addSep(clips)) {}

    bool write() {
        return racks() && arpeggios() && kitFiles() && tracks() && drums() && notes() && loops();
    }

private:
    static CStr inside(const CStr& folder, const char* name) {
        const CStr path = folder + name;
        createDir(path);
        return addSep(path);
    }

    bool racks() {
        const CStr folder = inside(presetFolder, "Effects");
        for (const RackPreset& preset : rackPresets()) {
            CEffect rack(host);
            rack.createIO();
            rack.createBuffers(host->frames);
            const CStr path = inside(folder, preset.use) + preset.name + ".qve";
            if (!fillRack(&rack, preset).empty() || !saveProgram(&rack, path)) return false;
        }
        return true;
    }

    bool arpeggios() {
        const CStr folder = inside(presetFolder, "Arpeggios");
        for (const ArpPreset& preset : arpPresets()) {
            CArp arp(host);
            arp.init();
            fillArp(*arp.getProg(), preset);
            if (!saveProgram(&arp, folder + preset.name + ".qva")) return false;
        }
        return true;
    }

    bool kitFiles() {
        const CStr folder = inside(presetFolder, "Kits");
        for (const Kit& kit : kits()) {
            CTrack* track = newTrack(trackDrum);
            takeKit(seq, track, kit);
            if (!saveKit(track, folder + kit.name + ".qvd")) return false;
        }
        return true;
    }

    bool tracks() {
        const CStr folder = inside(presetFolder, "Tracks");
        for (const TrackPreset& preset : trackPresets()) {
            CTrack* track = newTrack(preset.kind);
            if (!presets::fillTrack(track, preset)) return false;
            if (!saveTrack(track, folder + preset.name + ".qvp")) return false;
        }
        return true;
    }

    bool drums() {
        const CStr folder = inside(clipFolder, "Drums");
        for (const DrumClip& clip : drumClips()) {
            CTrack* track = newTrack(trackDrum);
            takeKit(seq, track, kits()[size_t(clip.kit)]);
            if (!save(drumPart(clip.rows), track, clip.name, folder)) return false;
        }
        return true;
    }

    bool notes() {
        const CStr folder = inside(clipFolder, "Notes");
        for (const NoteClip& clip : noteClips()) {
            CTrack* track = newTrack(trackMIDI);
            if (!giveProgram(track, clip.program)) return false;
            if (!save(notePart(clip.line), track, clip.name, folder)) return false;
        }
        return true;
    }

    bool loops() {
        const CStr folder = inside(clipFolder, "Sounds");
        for (const SoundLoop& loop : soundLoops()) {
            std::unique_ptr<CPart> part = soundPart(poolSample(host, loop), loop.bars);
            if (!save(std::move(part), newTrack(trackAudio), loop.name, folder)) return false;
        }
        return true;
    }

    CTrack* newTrack(int kind) { return seq->addTrack(kind, seq->getProg(), nullptr)->track; }

    bool save(std::unique_ptr<CPart> part, CTrack* track, const char* name, const CStr& folder) {
        part->id = name;
        CPart* linked = seq->getProg()->songTrackOf(track)->addPart(part.release(), nullptr);
        return saveClip(seq, linked, folder + name + ".qvc");
    }

    CQV* host;
    CSeq* seq;
    CStr presetFolder, clipFolder;
};

} // namespace

bool writeLibrary(CQV* host, const CStr& presetFolder, const CStr& clipFolder) {
    return createDir(presetFolder) && createDir(clipFolder) &&
           Library(host, presetFolder, clipFolder).write();
}

} // namespace presets
