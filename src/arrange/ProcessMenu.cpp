#include "arrange/ProcessMenu.h"

#include "arrange/SongRange.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "sequencer/AudioProcess.h"
#include "sequencer/CSeq.h"
#include "sequencer/MidiProcess.h"
#include "sequencer/ProcessMenus.h"
#include "sequencer/SongValues.h"
#include "sequencer/Takes.h"
#include "ui/Commands.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

constexpr int waitCursor = 2;
constexpr const char *section = "options", *editorKey = "ext-audio-app";

CStr externalEditor() {
    return CIniFile(inifile).readString(section, editorKey, "");
}

bool editorKnown() {
    const CStr program = externalEditor();
    return !program.empty() && fileExists(program);
}

CPart* onlyAudioPart(CSeq* seq) {
    CPartSummary summary;
    seq->getPartSummary(summary);
    return summary.audio == 1 ? seq->getFirstSelectedPart(partAudio, nullptr) : nullptr;
}

} // namespace

ProcessMenu::ProcessMenu(Workspace& space, const SongRange& songRange)
    : workspace(space), range(songRange), qv(space.host()) {
    workspace.commands().bind(
        "editexternal", [this] { openExternalClicked(); },
        [this] { return seq() && onlyAudioPart(seq()); });
}

CSeq* ProcessMenu::seq() const {
    return playableSongOf(qv);
}

void ProcessMenu::fill(CPopup* popup) {
    if (!seq() || qv->recording || qv->recUndo) return;
    CPartSummary selection;
    seq()->getPartSummary(selection);
    addEntries(popup, audioProcessMenu(selection, editorKnown()), false);
    addEntries(popup, midiProcessMenu(selection), true);
    addEntries(popup, drumProcessMenu(selection), true);
    addTakes(popup);
}

/// Of the only selected audio part: which pass of the loop it plays, all of it or the range.
void ProcessMenu::addTakes(CPopup* popup) {
    CPart* part = onlyAudioPart(seq());
    const Takes* takes = part ? takesOf(part) : nullptr;
    if (!takes) return;
    popup->addSeparator();
    CPopup* list = popup->addSub("Play take");
    for (int i = 0; i < int(takes->takes.size()); i++)
        list->add(asStr(i + 1), new _COnChange<ProcessMenu>(this, &ProcessMenu::takeClicked))->tag =
            i;
}

void ProcessMenu::takeClicked(CObject* sender) {
    CPart* part = onlyAudioPart(seq());
    if (!part) return;
    int from = part->pos, to = limitTicks(int64_t(from) + seq()->getTicks(part));
    if (const TimeRange* chosen = range.get()) {
        from = chosen->from;
        to = chosen->to;
    }
    compTake(seq(), part, static_cast<CMenuItem*>(sender)->tag, from, to);
}

void ProcessMenu::fillPreRoll(CPopup* popup) {
    if (!seq()) return;
    const int present = asInt(preRollOf(seq()).get()[0]);
    for (const int bars : {0, 1, 2, 4, 8}) {
        const CStr text = bars == 0 ? CStr("None") : asStr(bars);
        CMenuItem* item =
            popup->add(text, new _COnChange<ProcessMenu>(this, &ProcessMenu::preRollClicked));
        item->tag = bars;
        item->checked = bars == present;
    }
}

void ProcessMenu::preRollClicked(CObject* sender) {
    qv->values->set(preRollOf(seq()), double(static_cast<CMenuItem*>(sender)->tag));
}

void ProcessMenu::addEntries(CPopup* popup, const std::vector<ProcessEntry>& entries, bool midi) {
    for (const ProcessEntry& entry : entries) {
        if (entry.mode == entrySeparator) {
            popup->addSeparator();
            continue;
        }
        CStr text = entry.text;
        if (entry.mode == entryOpenWith) text += extractFileName(externalEditor()) + "'";
        popup
            ->add(text, new _COnChange<ProcessMenu>(this, midi ? &ProcessMenu::midiClicked
                                                               : &ProcessMenu::audioClicked))
            ->tag = entry.mode;
    }
}

/// Why nothing was done, if so.
void ProcessMenu::tell(const CStr& failure) const {
    if (!failure.empty()) showMsg(workspace.mainWindow(), "Error", failure);
}

void ProcessMenu::midiClicked(CObject* sender) {
    tell(processMIDI(seq(), static_cast<CMenuItem*>(sender)->tag));
}

void ProcessMenu::audioClicked(CObject* sender) {
    const int mode = static_cast<CMenuItem*>(sender)->tag;
    if (mode == entryOpenWith) return openExternalClicked();
    if (mode == entryOpenOther) return openExternalBrowseClicked();
    if (mode == entryCrossfade) return seq()->crossfadeClicked();
    CApp* app = workspace.mainWindow()->app;
    app->setCursor(waitCursor);
    const CStr failure = processAudio(seq(), mode);
    app->setCursor(0);
    tell(failure);
}

void ProcessMenu::openExternalClicked() {
    if (editorKnown())
        openWith(externalEditor());
    else
        openExternalBrowseClicked();
}

void ProcessMenu::openExternalBrowseClicked() {
    CFileWin dialog(workspace.mainWindow(), "Select external audio editor", "", "/usr/bin/", "",
                    false);
    dialog.showModal();
    if (dialog.path.empty()) return;
    CIniFile(inifile).writeString(section, editorKey, dialog.path);
    openWith(dialog.path);
}

void ProcessMenu::openWith(const CStr& program) {
    CPart* part = onlyAudioPart(seq());
    if (!part) return;
    tell(openExternal(seq(), part, program, [this] {
        return showMsg(workspace.mainWindow(), "Edit external",
                       "Click OK when you are done editing the sample", mbOk | mbCancel) == mbOk;
    }));
}
