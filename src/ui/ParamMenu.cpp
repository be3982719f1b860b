#include "ui/ParamMenu.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ControlSource.h"
#include "engine/Macros.h"
#include "engine/MapEdits.h"
#include "engine/ObjectKinds.h"
#include "engine/ValueDoor.h"
#include "gui/controls/CPopup.h"
#include "instruments/CSampler.h"
#include "instruments/SamplerEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/Commands.h"
#include "ui/MenuDeed.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

void addLearning(CPopup* popup, Workspace& workspace, const ParamOf& param, const ParamRef& now) {
    CQV* host = workspace.host();
    const LeadingController known = now ? controllerOf(host, now) : LeadingController();
    const bool awaited = known.number == LeadingController::awaited;
    CMenuItem* learn = addDeed(popup, "Learn controller", [host, param, &workspace] {
        const ParamRef to = param(true);
        if (!to) return;
        learnController(host, to);
        workspace.setStatus("Move a controller of a MIDI device: it turns this from then on");
    });
    learn->checked = awaited;
    const CStr which = known.number >= 0 ? " " + controlSourceText(known.number) : CStr();
    CMenuItem* forget =
        addDeed(popup, "Forget controller" + which, [host, now] { forgetController(host, now); });
    forget->enabled = awaited || known.number >= 0;
}

/// "1  Cutoff", or the number alone.
CStr macroTitle(CComp* comp, int macro) {
    const int param = comp->getMacroParam(macro);
    return asStr(macro + 1) + (param == -1 ? CStr() : "  " + paramTitle(comp, param));
}

void addMacros(CPopup* popup, Workspace& workspace, const ParamOf& param, CComp* comp,
               const ParamRef& now) {
    CPopup* macros = popup->addSub("Turn by macro");
    for (int i = 0; i < CComp::macroCount; i++) {
        CMenuItem* item = addDeed(macros, macroTitle(comp, i), [&workspace, param, comp, i] {
            const ParamRef to = param(true);
            if (to) setMacro(*comp, i, to.param);
        });
        item->checked = now && comp->getMacroParam(i) == now.param;
    }
}

} // namespace

void setMacro(CComp& comp, int macro, int param) {
    if (auto* sampler = compAs<CSampler>(&comp))
        setProgramMacro(sampler, macro, param);
    else
        comp.host->values->set(macroOf(&comp, macro), param);
}

bool showAutomation(Workspace& workspace, const ParamRef& of) {
    CSeq* seq = playableSongOf(workspace.host());
    CAction* show = workspace.commands().getAction("showtouched");
    workspace.host()->values->touch(of);
    if (seq) workspace.openEditor(seq);
    return seq && workspace.canRun(show) && workspace.runAction(show);
}

void addParamItems(CPopup* popup, Workspace& workspace, const ParamOf& param, CComp* comp) {
    const ParamRef now = param ? param(false) : ParamRef();
    if (!now && !comp) return;
    popup->addSeparator();
    addLearning(popup, workspace, param, now);
    if (comp && hasMacros(*comp) && now != ParamRef{comp, -1})
        addMacros(popup, workspace, param, comp, now);
    addDeed(popup, "Automate", [&workspace, param] {
        const ParamRef of = param(true);
        if (of && !showAutomation(workspace, of))
            workspace.setStatus("No track of the song leads through here");
    });
}
