#include "arrange/ArrangeMenus.h"

#include "arrange/ArrangeRoom.h"
#include "arrange/ArrangeView.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Senders.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "sequencer/render/CRender.h"
#include "sequencer/render/Freezing.h"
#include "ui/ActionItems.h"
#include "ui/MenuTags.h"
#include "ui/Workspace.h"

namespace {

constexpr struct {
    const char *action, *text;
} trackChoices[] = {{"addtrack", "Instrument track"},
                    {"addaudio", "Audio track"},
                    {"adddrum", "Drum track"},
                    {"addfolder", "Folder"}};

} // namespace

ArrangeMenus::ArrangeMenus(Workspace& space, ArrangeRoom& around, ArrangeView& shown)
    : workspace(space), qv(space.host()), room(around), view(shown) {
}

void ArrangeMenus::merge(CMenu* bar) {
    const auto entry = [&](const char* text, int entryTag) {
        bar->add(text, new _COnChange<ArrangeMenus>(this, &ArrangeMenus::entryClicked), entryTag);
    };
    entry("Song", menuSong);
    entry("Track", menuTrack);
    entry("Part", menuPart);
    entry("Options", menuOptions);
}

void ArrangeMenus::entryClicked(CObject* sender) {
    static constexpr struct {
        int tag;
        void (ArrangeMenus::*fill)(CPopup* popup);
    } menus[] = {{menuSong, &ArrangeMenus::fillSong},
                 {menuTrack, &ArrangeMenus::fillTrack},
                 {menuPart, &ArrangeMenus::fillPart},
                 {menuOptions, &ArrangeMenus::fillOptions}};
    auto* popup = static_cast<CPopup*>(sender);
    for (const auto& menu : menus)
        if (menu.tag == popup->tag) (this->*menu.fill)(popup);
}

void ArrangeMenus::showAt(void (ArrangeMenus::*fill)(CPopup*)) {
    CApp* app = view.win->app;
    const CPoint at = app->menuPoint();
    auto* popup = new CPopup(app, view.win);
    popup->autoDelete = true;
    (this->*fill)(popup);
    popup->popup(at.x, at.y, app->menuCtrl);
}

void ArrangeMenus::showTrack(CObject*) {
    showAt(&ArrangeMenus::fillTrack);
}

void ArrangeMenus::showPart(CObject*) {
    showAt(&ArrangeMenus::fillPart);
}

void ArrangeMenus::addGroups(CPopup* popup,
                             std::initializer_list<std::initializer_list<const char*>> groups) {
    for (const auto& group : groups) {
        popup->addSeparator();
        for (const char* name : group) addActionItem(popup, workspace, name);
    }
}

void ArrangeMenus::fillSong(CPopup* popup) {
    addGroups(popup,
              {{"play", "record", "stop", "loop", "metronome"},
               {"rewind", "rewindToPlay", "priorbeat", "nextbeat", "leftlocator", "rightlocator"},
               {"playselection", "loopselection", "exportrange"},
               {"addmarker", "deletemarker", "priormarker", "nextmarker", "timesig-add"},
               {"insertbars", "removebars"},
               {"punch", "takesinloops", "notetakes", "quantizetakes", "keepplayed"},
               {"remix"},
               {"priorprog", "nextprog"}});
    popup->addSeparator();
    room.takes.fillPreRoll(popup->addSub("Bars before a take"));
}

void ArrangeMenus::fillTrack(CPopup* popup) {
    CPopup* kinds = popup->addSub("Add track");
    for (const auto& choice : trackChoices)
        addActionItem(kinds, workspace, choice.action, choice.text);
    room.imports.fillNewTracks(kinds);
    addGroups(popup, {{"mute", "solo", "armtrack", "locktrack", "livetrack"},
                      {"muteall", "soloall"},
                      {"rename", "trackcolour", "foldtrack", "sumfolder"},
                      {"showtouched", "addpoint", "showtakes"},
                      {"trackup", "trackdown", "duplicatetrack", "deletetrack", "savetrack"},
                      {"opencomp", "trackarp"},
                      {"freeze", "bounce"}});
    popup->addSeparator();
    room.imports.fillForTrack(popup);
    popup->addSeparator();
    view.addTargets(popup);
    fillBounce(popup->addSub("Bounce range"));
}

void ArrangeMenus::fillPart(CPopup* popup) {
    addGroups(popup, {{"quantize", "splitatcursor", "glue", "crossfade"}, {"mutepart", "unghost"}});
    popup->addSeparator();
    room.process.fill(popup);
    room.takes.fill(popup);
    addGroups(popup, {{"unusedtakes"}});
}

void ArrangeMenus::fillOptions(CPopup* popup) {
    addGroups(popup, {{"rangetool", "rangemarkers", "rippletrack", "rippleall"},
                      {"snap", "snaprelative", "snapadaptive", "snapPrior", "snapNext"},
                      {"objectbar", "markers", "tempo-track", "timesig"},
                      {"preview"}});
}

void ArrangeMenus::fillBounce(CPopup* popup) {
    const int present = readBounceRange(qv);
    for (int range = rangeSong; range <= rangeSelected; range++) {
        CMenuItem* item =
            popup->add(renderRangeName(range),
                       new _COnChange<ArrangeMenus>(this, &ArrangeMenus::bounceClicked));
        item->tag = range;
        item->checked = range == present;
    }
}

void ArrangeMenus::bounceClicked(CObject* sender) {
    writeBounceRange(qv, tagOf(sender));
}
