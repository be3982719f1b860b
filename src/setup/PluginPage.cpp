#include "setup/PluginPage.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "setup/CSetupWin.h"
#include "ui/PluginShelf.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int belowList = 3 * (SetupPage::fieldHeight + SetupPage::gap) + SetupPage::margin;
constexpr int groupsWidth = 200;

CStr lineOf(const PluginList::Entry& entry) {
    if (!entry.good()) return extractFileName(entry.path) + ": " + entry.why;
    const CStr maker = entry.facts.vendor.empty() ? CStr() : ", " + entry.facts.vendor;
    return entry.facts.name + maker;
}

CStr factsOf(const PluginList::Entry& entry) {
    if (!entry.good()) return entry.path;
    const PluginFacts& f = entry.facts;
    return CStr(f.instrument ? "Instrument" : "Effect") + ", " + asStr(f.inputs) + " in, " +
           asStr(f.outputs) + " out, " + asStr(f.params) + " parameters: " + entry.path;
}

} // namespace

PluginPage::PluginPage(CSetupWin* window, CRect place)
    : SetupPage(window, place), shelf(window->workspace.pluginShelf()) {
    addHeading("Plug-ins");
    count = addField("", new CLabel(win, "", 0, 0, width - 2 * margin, fieldHeight));
    groups = addField("Processes", new CDropdown(win, "processes", 0, 0, groupsWidth, fieldHeight));
    for (const char* choice : {"One for each maker", "One for each format", "One for each plug-in"})
        groups->add(choice);
    groups->setIndex(int(shelf.processes->groups()));
    groups->spokenName = "Processes of plug-ins";
    wire(groups->onChange, new _COnChange<PluginPage>(this, &PluginPage::groupsChosen));
    addNote("Of those not trusted, from the next one on");
    list = new CListbox(win, "plugins", margin, nextTop, width - 2 * margin,
                        height - nextTop - belowList);
    list->spokenName = "Plug-ins";
    list->setAlign(alignWidth | alignHeight, margin, belowList);
    wire(list->onChange, new _COnChange<PluginPage>(this, &PluginPage::rowChosen));
    addControl(list);
    nextTop = height - belowList + gap;
    about = addField("", new CLabel(win, "", 0, 0, width - 2 * margin, fieldHeight));
    count->id = "count";
    about->id = "about";
    about->textCol = win->app->gui->palette.dimText;
    trusted = addField("", new CCheckbox(win, "trusted", "Trusted: runs in the program", 0, 0,
                                         width - 2 * margin, fieldHeight));
    trusted->hint =
        "A crash of it takes the program along; from the next time on that it is loaded";
    wire(trusted->onChange, new _COnChange<PluginPage>(this, &PluginPage::trustClicked));
    CButton* look =
        newButton("Look for new ones", new _COnChange<PluginPage>(this, &PluginPage::newClicked));
    look->hint = "Looks at the files of the folders that are new or changed";
    again = newButton("Look again", new _COnChange<PluginPage>(this, &PluginPage::againClicked));
    again->hint = "Looks at the chosen file again";
    CButton* all =
        newButton("Look at all", new _COnChange<PluginPage>(this, &PluginPage::allClicked));
    all->hint = "Looks at every file again";
    stop = newButton("Stop", new _COnChange<PluginPage>(this, &PluginPage::stopClicked));
    addField("", look);
    for (CButton* b : {again, all, stop}) addBeside(b);
    for (CCtrl* low :
         {static_cast<CCtrl*>(about), static_cast<CCtrl*>(trusted), static_cast<CCtrl*>(look),
          static_cast<CCtrl*>(again), static_cast<CCtrl*>(all), static_cast<CCtrl*>(stop)})
        low->setAlign(alignBottom, 0, height - low->top - low->height);
    shelf.onChange = [this] { fill(); };
    fill();
}

PluginPage::~PluginPage() {
    shelf.onChange = {};
}

/// Those that cannot be used first, as somebody may look for them.
void PluginPage::fill() {
    const CStr now = chosen();
    paths.clear();
    list->clearRows();
    std::vector<const PluginList::Entry*> shown;
    for (const PluginList::Entry& entry : shelf.list.all())
        if (!entry.good()) shown.push_back(&entry);
    const auto usable = shelf.list.usable();
    shown.insert(shown.end(), usable.begin(), usable.end());
    for (const PluginList::Entry* entry : shown) {
        list->add(lineOf(*entry));
        paths.push_back(entry->path);
    }
    const auto at = std::ranges::find(paths, now);
    list->setIndex(at == paths.end() ? -1 : int(at - paths.begin()));
    rowChosen(nullptr);
    tellCount();
    list->redraw();
}

void PluginPage::tellCount() {
    const bool busy = shelf.scan.busy();
    const int good = int(shelf.list.usable().size()), all = int(shelf.list.all().size());
    const CStr text = busy ? "Looking at plug-ins: " + asStr(shelf.scan.done()) + " of " +
                                 asStr(shelf.scan.total())
                           : asStr(good) + " of " + asStr(all) + " files can be used";
    if (!(text == count->text)) count->setText(text);
    stop->setEnabled(busy);
}

CStr PluginPage::chosen() const {
    const int at = list->index;
    return at >= 0 && at < int(paths.size()) ? paths[size_t(at)] : CStr();
}

void PluginPage::rowChosen(CObject*) {
    const PluginList::Entry* entry = shelf.list.find(chosen());
    again->setEnabled(entry != nullptr);
    about->setText(entry ? factsOf(*entry) : CStr());
    trusted->setEnabled(entry && entry->good());
    trusted->checked = entry && shelf.processes->trust.trusted(entry->path);
    trusted->redraw();
}

void PluginPage::trustClicked(CObject*) {
    shelf.processes->trust.set(chosen(), trusted->checked);
}

void PluginPage::groupsChosen(CObject*) {
    shelf.processes->setGroups(PluginGroups(groups->index));
}

void PluginPage::newClicked(CObject*) {
    shelf.refresh();
}

void PluginPage::againClicked(CObject*) {
    shelf.rescan(chosen());
    tellCount();
}

void PluginPage::allClicked(CObject*) {
    shelf.rescanAll();
    tellCount();
}

void PluginPage::stopClicked(CObject*) {
    shelf.scan.cancel();
    tellCount();
}
