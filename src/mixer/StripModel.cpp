#include "mixer/StripModel.h"

#include "engine/CQV.h"
#include "engine/KeyInput.h"
#include "engine/Mixing.h"
#include "gui/Colours.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/FolderSum.h"
#include "ui/Song.h"
#include "ui/TrackPalette.h"

#include <algorithm>
#include <array>

namespace {

/// Place in `COutputChannel::sections`, and what stands there once somebody has chosen.
constexpr int sectionDrums = 2, choiceNo = 1, choiceYes = 2;

class Collector {
public:
    explicit Collector(CQV* root) : host(root), song(songOf(root)) {}

    std::vector<MixerStrip> collect() {
        addType(compAudioIn, StripSection::inputs);
        addTracks();
        for (auto* c : host->comps)
            if (!isEdge(c)) addAll(c, nullptr, -1, StripSection::tracks);
        addGroups();
        for (auto* c : host->sends) addAll(c, nullptr, -1, StripSection::sends);
        addType(compAudioOut, StripSection::outputs);
        return std::move(strips);
    }

private:
    static bool isEdge(const CComp* c) {
        return c->type == compAudioIn || c->type == compAudioOut || c->type == compGroupCh ||
               c->type == compSeq;
    }
    void add(COutputChannel* ch, CTrack* track, int row, StripSection section, bool named) {
        const auto known = [ch](const MixerStrip& s) { return s.channel == ch; };
        if (ch && std::ranges::none_of(strips, known))
            strips.push_back({ch, ch->comp, track, row, section, named});
    }
    void addAll(CComp* c, CTrack* track, int row, StripSection section) {
        const bool named = track && c->outputs.getCount() == 1 && playedByOne(c);
        for (auto* ch : c->outputs) add(ch, track, row, section, named);
    }
    bool playedByOne(const CComp* c) const {
        int count = 0;
        for (auto* t : song->tracks) count += t->kind == trackMIDI && fedBy(c, t->outPort());
        return count == 1;
    }
    void addType(int type, StripSection section) {
        for (auto* c : host->comps)
            if (c->type == type) addAll(c, nullptr, -1, section);
    }
    void addTracks() {
        if (!song) return;
        int row = 0;
        for (auto* t : song->tracks) {
            for (auto* ch : t->outputs) {
                add(ch, t, row, StripSection::tracks, true);
                if (strips.back().channel == ch && drumsUnfolded(strips.back())) addDrums(t, row);
            }
            if (t->kind == trackMIDI)
                for (auto* c : host->comps)
                    if (!isEdge(c) && fedBy(c, t->outPort()))
                        addAll(c, t, row, StripSection::tracks);
            row++;
        }
    }
    void addDrums(CTrack* t, int row) {
        for (auto* sound : drumSounds(*t->drumLayer()))
            strips.push_back({sound->output.get(), t, t, row, StripSection::tracks, false, sound});
    }
    /// Those of folders in the order of the song.
    void addGroups() {
        int row = 0;
        if (song)
            for (auto* t : song->tracks) {
                if (t->kind == trackFolder)
                    if (CComp* group = folderGroup(song, t))
                        addAll(group, t, row, StripSection::groups);
                row++;
            }
        addType(compGroupCh, StripSection::groups);
    }

    CQV* host;
    CSeq* song;
    std::vector<MixerStrip> strips;
};

} // namespace

const char* titleOf(StripSection section) {
    static constexpr const char* titles[stripSections] = {"Inputs", "Tracks", "Groups", "Sends",
                                                          "Outputs"};
    return titles[int(section)];
}

bool MixerStrip::ownsTrack() const {
    return track && track->outputs.contains(channel);
}

bool MixerStrip::hasDrums() const {
    return ownsTrack() && track->kind == trackDrum && track->drumLayer();
}

bool drumsUnfolded(const MixerStrip& strip) {
    return strip.hasDrums() && strip.channel->sections[sectionDrums] == choiceYes;
}

void unfoldDrums(const MixerStrip& strip, bool on) {
    strip.channel->sections[sectionDrums] = on ? choiceYes : choiceNo;
}

std::vector<MixerStrip> listStrips(CQV* host) {
    return Collector(host).collect();
}

CStr nameOf(const MixerStrip& strip) {
    if (strip.drum) return strip.drum->getId();
    if (strip.named) return strip.track->id;
    const auto& outputs = strip.comp->outputs;
    if (outputs.getCount() < 2) return strip.comp->id;
    return strip.comp->id + " " + asStr(outputs.indexed(strip.channel) + 1);
}

CStr nameOfStrip(CQV* host, const COutputChannel* channel) {
    for (const MixerStrip& s : listStrips(host))
        if (s.channel == channel) return nameOf(s);
    return stripName(channel);
}

CStr kindOf(const MixerStrip& strip) {
    if (strip.drum) return "Sound of " + strip.track->id;
    switch (strip.section) {
    case StripSection::inputs:
        return "Audio input";
    case StripSection::groups:
        return strip.track ? "Sum of folder " + strip.track->id : CStr("Group");
    case StripSection::sends:
        return "Send bus";
    case StripSection::outputs:
        return "Audio output";
    default:
        break;
    }
    if (strip.ownsTrack()) return strip.track->kind == trackDrum ? "Drum track" : "Audio track";
    if (!strip.track) return "Component";
    return strip.named ? "Instrument " + strip.comp->id : "Instrument of " + strip.track->id;
}

int colourOf(const MixerStrip& strip) {
    if (!strip.track) return -1;
    const int own = strip.track->colour;
    return own < 0 ? trackColour(strip.row) : hexColor(unsigned(own));
}

bool isHeard(const MixerStrip& strip) {
    if (strip.drum && strip.drum->layer->soundMuted(strip.drum)) return false;
    if (strip.drum) return stripOpen(strip.comp, strip.track->output());
    return stripOpen(strip.comp, strip.channel);
}
