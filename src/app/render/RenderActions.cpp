#include "app/render/RenderActions.h"

#include "app/CAction.h"
#include "app/main/CMainWin.h"
#include "app/main/Displays.h"
#include "app/render/CProgressWin.h"
#include "app/render/CRenderWin.h"
#include "base/Messages.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "sequencer/Freezing.h"

namespace {

constexpr const char* bounceTitle = "Bounce to new track";

}

const RenderActions::Command RenderActions::commands[] = {
    {"render", &RenderActions::exportSong},
    {"freeze", &RenderActions::freeze},
    {"bounce", &RenderActions::bounce},
};

const RenderActions::Command* RenderActions::find(const CAction* action) {
    for (const Command& c : commands)
        if (action->name == c.name) return &c;
    return nullptr;
}

CSeq* RenderActions::seq() const {
    CSeq* song = songOf(qv);
    return song && song->getProg() ? song : nullptr;
}

bool RenderActions::knows(const CAction* action) const {
    return seq() && find(action);
}

bool RenderActions::run(const CAction* action) {
    const Command* command = seq() ? find(action) : nullptr;
    // Not inside another render, whose events are handled while it runs.
    if (command && window->pumping == 0) (this->*command->run)();
    return command != nullptr;
}

bool RenderActions::frozen() const {
    if (!seq()) return false;
    for (auto* t : each<CSongTrack>(seq()->getProg()->tracks))
        if (t->track->selected() && !t->freezeItems.empty()) return true;
    return false;
}

/// What an offline render has played is not what the user has heard.
void RenderActions::clearMeters() {
    for (const CList* list : {&qv->comps, &qv->sends})
        for (auto* comp : each<CComp>(*list))
            for (auto* channel : each<COutputChannel>(comp->outputs))
                for (Shared<float>* peak :
                     {&channel->peakL, &channel->peakR, &channel->holdL, &channel->holdR})
                    *peak = 0.0f;
}

void RenderActions::exportSong() {
    exportProject(window, seq());
    clearMeters();
}

void RenderActions::freeze() {
    CProgressWin progress(window, "Freeze");
    freezeTracks(seq(), &progress);
    clearMeters();
}

void RenderActions::bounce() {
    CList selected;
    seq()->getProg()->getSelectedParts(&selected);
    const int range = readBounceRange(qv);
    if (range == rangeSelected && selected.empty()) {
        showMsg(window, bounceTitle,
                "No part is selected. Ctrl+A selects all of them; Track, \"Bounce range\" offers "
                "other ranges.");
        return;
    }
    CProgressWin progress(window, bounceTitle);
    bounceToNewTrack(seq(), range, &progress);
    clearMeters();
}
