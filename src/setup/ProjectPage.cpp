#include "setup/ProjectPage.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "setup/CSetupWin.h"

ProjectPage::ProjectPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    const bool saved = !qv->projectFile.empty();
    const int pathWidth = width - 2 * margin - labelWidth;
    addHeading("Project");
    auto* location = new CLabel(win, saved ? qv->projectFile : "Project not saved", 0, 0, pathWidth,
                                fieldHeight);
    location->setAlign(alignWidth, margin, 0);
    addField("Location", location);
    const CStr folder = qv->getAudioFolder(false, false, false);
    const bool exists = !folder.empty() && folderExists(folder);
    CButton* create =
        newButton("Create", new _COnChange<ProjectPage>(this, &ProjectPage::audioFolderClicked));
    create->enabled = !exists;
    addField("Audio folder", create);
    audioFolder = addNote(exists ? folder : "None yet");
}

void ProjectPage::audioFolderClicked(CObject*) {
    const CStr folder = qv->getAudioFolder(true, false, false);
    if (folder.empty() || !folderExists(folder)) {
        showMsg(setup, "Audio folder", "Unable to create audio folder, project not saved", mbOk);
        return;
    }
    qv->setModified();
    setup->tabChanged();
}
