#include "panels/sampler/ProgramList.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CListbox.h"
#include "instruments/CSampler.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerEdits.h"
#include "instruments/SoundSet.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

namespace {

constexpr int gap = 8, high = 24, rowHeight = 20, familyWidth = 152, textWidth = 200;
constexpr int hearWidth = 112, leastHeight = 160;
constexpr int middleKey = 60, lowKey = 36, soundTicks = 12; ///< a tick is 40 ms
constexpr const char* section = "favourites";

/// What a row of the families stands for.
enum Group { groupAll, groupFavourites, groupFactory, groupSet, groupPresets, groupFamily };
constexpr const char* groupNames[] = {"All", "Favourites", "Factory", "General MIDI", "Presets"};

/// Programs with their families at the right.
class ProgramRows : public CListbox {
public:
    using CListbox::CListbox;

protected:
    void paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) override {
        CListbox::paintRow(g, rect, line, look);
        const bool strong = &look == &clListboxSelected;
        const int ink = strong ? look.textCol : win->app->gui->palette.dimText;
        g->drawText(ink, *static_cast<const CStr*>(line->data), sizeRect(rect, 0, 0, -gap, 0),
                    textRight);
    }
};

} // namespace

ProgramList::ProgramList(CWin* owner, Workspace& space, CSampler& of)
    : CGroup(owner, "factory", 0, 0, 1, 1), workspace(space), sampler(of),
      text(new CEdit(owner, "find", 0, 0, textWidth, high)),
      hear(new CButton(owner, "hear", "Hear at once", 0, 0, hearWidth, high)),
      families(new CListbox(owner, "families", 0, 0, familyWidth, 1)),
      programs(new ProgramRows(owner, "list", 0, 0, 1, 1)) {
    text->spokenName = "Find programs";
    text->hint = "Type a part of a name, a family or another word";
    text->tabStop = true;
    addControl(text);
    hear->hint = "A program that is chosen sounds";
    hear->skin = &clTrackControls;
    hear->litSkin = &clTrackControlsPushed;
    hear->tabStop = true;
    hear->setLit(true);
    hear->onChange = new _COnChange<ProgramList>(this, &ProgramList::hearClicked);
    addControl(hear);
    families->spokenName = "Families";
    programs->spokenName = "Programs";
    programs->hint = "Choose one to take it; the box marks a favourite";
    programs->checkable = true;
    for (CListbox* box : {families, programs}) {
        box->itemHeight = rowHeight;
        box->tabStop = true;
        addControl(box);
    }
    families->onChange = new _COnChange<ProgramList>(this, &ProgramList::familyChosen);
    programs->onChange = new _COnChange<ProgramList>(this, &ProgramList::programChosen);
    programs->onChecked = new _COnChange<ProgramList>(this, &ProgramList::favouriteChanged);
    readEntries();
    list();
}

ProgramList::~ProgramList() {
    sound(-1);
}

void ProgramList::readEntries() {
    for (int i = 0; i < factoryCount; i++)
        entries.push_back(
            {factoryName(i), factoryFamily(i), factoryWords(i), CStr(), i, groupFactory});
    readSet();
    CStringList names, folders;
    workspace.host()->getFolders("PresetFolders", &names, &folders);
    for (int i = 0; i < folders.getCount(); i++) readPresets(folders.get(i));
    const CIniBatch together(inifile); // reads the file once
    for (Entry& entry : entries) entry.favourite = iniReadInt(section, entry.key(), 0) != 0;
    listFamilies();
}

void ProgramList::readSet() {
    for (const SetProgram& p : listSoundSet(soundSetFolder()))
        entries.push_back({p.name, p.family, "GM " + asStr(p.number + 1), p.path, -1, groupSet});
}

void ProgramList::readPresets(const CStr& folder) {
    CStringList files;
    if (!readDir(folder, ".qvs", nullptr, &files, true)) return;
    for (int i = 0; i < files.getCount(); i++)
        entries.push_back({changeFileExt(files.get(i), ""), CStr(), CStr(),
                           addSep(folder) + files.get(i), -1, groupPresets});
}

/// First where they are from, as far as there are any.
void ProgramList::listFamilies() {
    std::set<std::string> all;
    std::set<int> origins{groupAll, groupFavourites};
    for (const Entry& entry : entries) {
        origins.insert(entry.origin);
        if (!entry.family.empty()) all.insert(entry.family.asChar());
    }
    for (const int origin : origins) {
        families->add(groupNames[origin]);
        groups.push_back(origin);
    }
    for (const std::string& family : all) {
        families->add(family.c_str());
        groups.push_back(groupFamily);
    }
    families->setIndex(0);
}

/// Each word that is typed is in the name, the family or the words.
bool ProgramList::fits(const Entry& entry) const {
    const int family = families->index;
    const int group = family < 0 ? groupAll : groups[size_t(family)];
    if (group == groupFavourites && !entry.favourite) return false;
    if (group > groupFavourites && group < groupFamily && group != entry.origin) return false;
    if (group == groupFamily && families->row(family)->id != entry.family) return false;
    const std::string all =
        (entry.name + " " + entry.family + " " + entry.words).upperCase().asChar();
    std::istringstream typed(shownText.upperCase().asChar());
    for (std::string word; typed >> word;)
        if (all.find(word) == std::string::npos) return false;
    return true;
}

void ProgramList::list() {
    shown.clear();
    programs->clearRows();
    for (int i = 0; i < int(entries.size()); i++) {
        const Entry& entry = entries[size_t(i)];
        if (!fits(entry)) continue;
        shown.push_back(i);
        CListRow* row = programs->add(entry.name);
        row->checked = entry.favourite;
        row->data = &entries[size_t(i)].family;
    }
    programs->setIndex(-1);
    programs->resized();
}

void ProgramList::fit(int wide, int deep) {
    setBounds(left, top, wide, std::max(leastHeight, deep - gap));
    text->setBounds(gap, gap, textWidth, high);
    hear->setBounds(2 * gap + textWidth, gap, hearWidth, high);
    const int from = high + 2 * gap, below = height - from - gap;
    families->setBounds(gap, from, familyWidth, below);
    programs->setBounds(familyWidth + 2 * gap, from, wide - familyWidth - 3 * gap, below);
    families->resized();
    programs->resized();
}

void ProgramList::refresh() {
    if (text->text != shownText) {
        shownText = text->text;
        list();
    }
    if (sounding >= 0 && --ticksLeft <= 0) sound(-1);
}

void ProgramList::sound(int key) {
    int released[128] = {}, pressed[128] = {};
    if (sounding >= 0) released[sounding] = 1;
    if (key >= 0) pressed[key] = 1;
    sampler.pianoKeys(released, pressed);
    sounding = key;
    ticksLeft = soundTicks;
}

void ProgramList::familyChosen(CObject*) {
    list();
}

void ProgramList::programChosen(CObject*) {
    if (programs->index < 0 || programs->index >= int(shown.size())) return;
    const Entry& entry = entries[size_t(shown[size_t(programs->index)])];
    if (!take(entry)) return workspace.setStatus("No program could be read from " + entry.path);
    if (!hear->lit) return;
    const bool low = entry.family.upperCase() == "BASS";
    sound(low ? lowKey : middleKey);
}

bool ProgramList::take(const Entry& entry) {
    if (!entry.path.empty()) return takeProgramFile(&sampler, entry.path);
    takeFactoryProgram(&sampler, entry.number);
    return true;
}

void ProgramList::favouriteChanged(CObject*) {
    for (size_t i = 0; i < shown.size(); i++) {
        Entry& entry = entries[size_t(shown[i])];
        const bool now = programs->row(int(i))->checked;
        if (now == entry.favourite) continue;
        entry.favourite = now;
        if (workspace.host()->settingsEnabled)
            CIniFile(inifile).writeInteger(section, entry.key(), now);
    }
}

void ProgramList::hearClicked(CObject*) {
    hear->setLit(!hear->lit);
    if (!hear->lit) sound(-1);
}
