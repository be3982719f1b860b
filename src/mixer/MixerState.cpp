#include "mixer/MixerState.h"

#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

/// Places in `COutputChannel::sections`, which are -1 as long as nobody has chosen.
enum Section : int { sectionEq, sectionWidth };
enum Choice : int { choiceNo = 1, choiceYes = 2 }; // 0 is kept for none at all

/// It is selected along with its track; a single sound of a kit is not.
bool goesWithTrack(const MixerStrip& strip) {
    return strip.track && !strip.drum;
}

bool holds(const std::vector<MixerStrip>& strips, const COutputChannel* ch) {
    return std::ranges::any_of(strips, [ch](const MixerStrip& s) { return s.channel == ch; });
}

} // namespace

MixerState::MixerState(Workspace& space, CMixer& kept)
    : workspace(space), qv(space.host()), mixer(kept) {
}

ValueDoor* MixerState::door() const {
    return qv->values.get();
}

void MixerState::tell(const CStr& text) const {
    workspace.setStatus(text);
}

// Selection.

bool MixerState::selected(const MixerStrip& strip) const {
    return goesWithTrack(strip) ? strip.track->selected()
                                : std::ranges::find(chosen, strip.channel) != chosen.end();
}

std::vector<MixerStrip> MixerState::selection() const {
    std::vector<MixerStrip> all;
    for (const MixerStrip& s : shown)
        if (selected(s)) all.push_back(s);
    return all;
}

CSongTrack* MixerState::songTrackOf(const MixerStrip& strip) const {
    const CSeq* song = playableSongOf(qv);
    if (!song || !strip.track) return nullptr;
    for (auto* t : const_cast<CSeq*>(song)->getProg()->tracks)
        if (t->track == strip.track) return t;
    return nullptr;
}

void MixerState::select(const MixerStrip& strip, bool on) {
    if (goesWithTrack(strip)) {
        if (CSongTrack* t = songTrackOf(strip)) songOf(qv)->selectTrack(t, on);
        return;
    }
    std::erase(chosen, strip.channel);
    if (on) chosen.push_back(strip.channel);
}

void MixerState::unselect() {
    if (CSeq* song = songOf(qv)) song->unselectTracks();
    chosen.clear();
}

void MixerState::selectAll() {
    for (const MixerStrip& s : shown) select(s, true);
}

void MixerState::choose(const MixerStrip& strip, int btn) {
    const bool add = btn & modControl;
    const auto indexOf = [this](const COutputChannel* ch) {
        const auto found =
            std::ranges::find_if(shown, [ch](const MixerStrip& s) { return s.channel == ch; });
        return size_t(found - shown.begin());
    };
    const size_t here = indexOf(strip.channel), from = indexOf(anchor);
    const bool was = selected(strip);
    if (!add) unselect();
    if ((btn & modShift) && from < shown.size() && here < shown.size()) {
        for (size_t i = std::min(here, from); i <= std::max(here, from); i++)
            select(shown[i], true);
        return;
    }
    anchor = strip.channel;
    select(strip, !add || !was);
}

std::vector<MixerStrip> MixerState::together(const MixerStrip& strip) const {
    std::vector<MixerStrip> all = {strip};
    if (!selected(strip)) return all;
    for (const MixerStrip& s : selection())
        if (s.channel != strip.channel) all.push_back(s);
    return all;
}

void MixerState::keepTo(const std::vector<MixerStrip>& all) {
    std::erase_if(chosen, [&all](const COutputChannel* ch) { return !holds(all, ch); });
    if (!holds(all, anchor)) anchor = nullptr;
}

// How strips are shown.

bool MixerState::isWide(const MixerStrip& strip) const {
    return strip.channel->sections[sectionWidth] != choiceNo;
}

void MixerState::setWide(const MixerStrip& strip, bool wide) {
    strip.channel->sections[sectionWidth] = wide ? choiceYes : choiceNo;
}

bool MixerState::showsEq(const MixerStrip& strip) {
    return strip.channel->sections[sectionEq] == choiceYes;
}

void MixerState::showEq(const MixerStrip& strip, bool on) {
    strip.channel->sections[sectionEq] = on ? choiceYes : choiceNo;
}
