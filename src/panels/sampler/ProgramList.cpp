#include "panels/sampler/ProgramList.h"

#include "base/CIniFile.h"
#include "engine/CQV.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CListbox.h"
#include "instruments/CSampler.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerEdits.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace {

constexpr int gap = 8, high = 24, rowHeight = 20, familyWidth = 152, textWidth = 200;
constexpr int hearWidth = 112, leastHeight = 160;
constexpr int middleKey = 60, lowKey = 36, soundTicks = 12; ///< a tick is 40 ms
constexpr const char* section = "favourites";
constexpr const char* everything[] = {"All", "Favourites"};

} // namespace

ProgramList::ProgramList(CWin* owner, Workspace& space, CSampler& of)
    : CGroup(owner, "factory", 0, 0, 1, 1), workspace(space), sampler(of),
      text(new CEdit(owner, "find", 0, 0, textWidth, high)),
      hear(new CButton(owner, "hear", "Hear at once", 0, 0, hearWidth, high)),
      families(new CListbox(owner, "families", 0, 0, familyWidth, 1)),
      programs(new CListbox(owner, "list", 0, 0, 1, 1)) {
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
    std::vector<CStr> all(std::begin(everything), std::end(everything));
    CIniFile settings(inifile);
    for (int i = 0; i < factoryCount; i++) {
        const Entry entry{factoryName(i), factoryFamily(i), factoryWords(i),
                          settings.readInteger(section, factoryName(i), 0) != 0};
        if (std::ranges::find(all, entry.family) == all.end()) all.push_back(entry.family);
        entries.push_back(entry);
    }
    std::sort(all.begin() + std::size(everything), all.end(),
              [](const CStr& a, const CStr& b) { return std::string(a.asChar()) < b.asChar(); });
    for (const CStr& family : all) families->add(family);
    families->setIndex(0);
}

/// Each word that is typed is in the name, the family or the words.
bool ProgramList::fits(const Entry& entry) const {
    const int family = families->index;
    if (family == 1 && !entry.favourite) return false;
    if (family > 1 && families->row(family)->id != entry.family) return false;
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
        programs->add(entry.name + "   " + entry.family)->checked = entry.favourite;
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
    const int number = shown[size_t(programs->index)];
    takeFactoryProgram(&sampler, number);
    if (!hear->lit) return;
    const bool low = entries[size_t(number)].family.upperCase() == "BASS";
    sound(low ? lowKey : middleKey);
}

void ProgramList::favouriteChanged(CObject*) {
    for (size_t i = 0; i < shown.size(); i++) {
        Entry& entry = entries[size_t(shown[i])];
        const bool now = programs->row(int(i))->checked;
        if (now == entry.favourite) continue;
        entry.favourite = now;
        if (workspace.host()->settingsEnabled)
            CIniFile(inifile).writeInteger(section, entry.name, now);
    }
}

void ProgramList::hearClicked(CObject*) {
    hear->setLit(!hear->lit);
    if (!hear->lit) sound(-1);
}
