#include "app/render/RenderActions.h"

#include "app/CAction.h"
#include "app/main/CMainWin.h"
#include "app/main/Displays.h"
#include "app/render/CProgressWin.h"
#include "app/render/CRenderWin.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "sequencer/Freezing.h"

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

void RenderActions::exportSong() {
    exportProject(window, seq());
}

void RenderActions::freeze() {
    CProgressWin progress(window, "Freeze");
    freezeTracks(seq(), &progress);
}

void RenderActions::bounce() {
    CProgressWin progress(window, "Bounce to new track");
    bounceToNewTrack(seq(), readBounceRange(qv), &progress);
}
