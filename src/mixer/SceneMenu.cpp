#include "mixer/SceneMenu.h"

#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "gui/CWin.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CTextWin.h"
#include "mixer/CMixerPanel.h"

namespace {

constexpr struct {
    const char* text;
    int part;
} partEntries[] = {{"Levels", sceneLevels},
                   {"Mute and solo", sceneSwitches},
                   {"Equalisers", sceneEq},
                   {"Sends", sceneSends},
                   {"Inserts", sceneInserts}};

} // namespace

void SceneMenu::fill(CPopup* popup) {
    const CMixer& mixer = panel.state.mixer;
    const auto add = [&](CPopup* to, const CStr& text, void (SceneMenu::*chosen)(CObject*),
                         int tag) {
        CMenuItem* item = to->add(text, new _COnChange<SceneMenu>(this, chosen));
        item->tag = tag;
        return item;
    };
    const int count = mixer.scenes.getCount();
    for (int i = 0; i < count; i++) add(popup, mixer.sceneAt(i)->id, &SceneMenu::recallChosen, i);
    popup->addSeparator();
    add(popup, "Add scene", &SceneMenu::addChosen, 0);
    const struct {
        const char* text;
        void (SceneMenu::*chosen)(CObject*);
    } edits[] = {{"Update", &SceneMenu::updateChosen},
                 {"Rename", &SceneMenu::renameChosen},
                 {"Delete", &SceneMenu::deleteChosen}};
    for (const auto& edit : edits) {
        if (count == 0) break;
        CPopup* sub = popup->addSub(edit.text);
        for (int i = 0; i < count; i++) add(sub, mixer.sceneAt(i)->id, edit.chosen, i);
    }
    popup->addSeparator();
    CPopup* recalled = popup->addSub("What is recalled");
    for (const auto& entry : partEntries)
        add(recalled, entry.text, &SceneMenu::partChosen, entry.part)->checked =
            (parts & entry.part) != 0;
    add(popup, "Selected strips only", &SceneMenu::selectedChosen, 0)->checked = selectedOnly;
}

void SceneMenu::recall(int index) {
    const CMixScene* scene = panel.state.mixer.sceneAt(index);
    if (!scene) return;
    std::vector<COutputChannel*> only;
    if (selectedOnly)
        for (const MixerStrip& s : panel.state.selection()) only.push_back(s.channel);
    if (selectedOnly && only.empty()) return panel.state.tell("No strip is selected");
    scene->recall(panel.state.qv, parts, only, scene->id);
    panel.refresh();
    panel.state.tell("Recalled: " + scene->id);
}

void SceneMenu::compare(int to) {
    if (to == present) return;
    states[size_t(present)].take(panel.state.qv);
    known[size_t(present)] = true;
    present = to;
    if (known[size_t(to)])
        states[size_t(to)].recall(panel.state.qv, sceneAll, {}, to ? "Mixer B" : "Mixer A");
    panel.refresh();
}

void SceneMenu::follow() {
    for (CMixScene& scene : states) scene.keepTo(panel.state.qv);
    for (auto* scene : panel.state.mixer.scenes) scene->keepTo(panel.state.qv);
}

void SceneMenu::recallChosen(CObject* sender) {
    recall(tagOf(sender));
}

void SceneMenu::addChosen(CObject*) {
    panel.state.mixer.addScene();
}

void SceneMenu::updateChosen(CObject* sender) {
    CMixer& mixer = panel.state.mixer;
    if (CMixScene* scene = mixer.sceneAt(tagOf(sender))) mixer.updateScene(scene);
}

void SceneMenu::renameChosen(CObject* sender) {
    CMixer& mixer = panel.state.mixer;
    CMixScene* scene = mixer.sceneAt(tagOf(sender));
    if (!scene) return;
    CTextWin dialog(panel.win, "Rename scene", scene->id);
    dialog.showModal();
    if (dialog.result) mixer.renameScene(scene, dialog.text);
}

void SceneMenu::deleteChosen(CObject* sender) {
    CMixer& mixer = panel.state.mixer;
    if (CMixScene* scene = mixer.sceneAt(tagOf(sender))) mixer.deleteScene(scene);
}

void SceneMenu::partChosen(CObject* sender) {
    parts ^= tagOf(sender);
}

void SceneMenu::selectedChosen(CObject*) {
    selectedOnly = !selectedOnly;
}
