#include "arrange/ProcessMenu.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/edit/ProcessMenus.h"
#include "sequencer/edit/TempoEdits.h"
#include "sequencer/song/CSeq.h"
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

} // namespace

ProcessMenu::ProcessMenu(Workspace& space) : workspace(space), qv(space.host()) {
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
    addFitBars(popup);
    addEntries(popup, midiProcessMenu(selection), true);
    addEntries(popup, drumProcessMenu(selection), true);
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

/// The tempo that makes a recording last so many bars.
void ProcessMenu::addFitBars(CPopup* popup) {
    if (!onlyAudioPart(seq())) return;
    CPopup* list = popup->addSub("Fit bars to this recording");
    for (const int bars : {1, 2, 4, 8, 16, 32, 64})
        list->add(asStr(bars) + (bars == 1 ? " bar" : " bars"),
                  new _COnChange<ProcessMenu>(this, &ProcessMenu::fitBarsClicked))
            ->tag = bars;
}

void ProcessMenu::fitBarsClicked(CObject* sender) {
    CPart* part = onlyAudioPart(seq());
    if (part && !fitBars(seq(), part, tagOf(sender)))
        tell("No tempo from 10 to 250 makes this recording last so long");
}

/// Why nothing was done, if so.
void ProcessMenu::tell(const CStr& failure) const {
    if (!failure.empty()) showMsg(workspace.mainWindow(), "Error", failure);
}

void ProcessMenu::midiClicked(CObject* sender) {
    tell(processMIDI(seq(), tagOf(sender)));
}

void ProcessMenu::audioClicked(CObject* sender) {
    const int mode = tagOf(sender);
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
