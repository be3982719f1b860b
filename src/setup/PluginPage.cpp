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

constexpr int belowList = 4 * (SetupPage::fieldHeight + SetupPage::gap) + SetupPage::margin;
constexpr int groupsWidth = 200, formatsWidth = 120;

CStr percent(float load) {
    return asStrFormat(double(load) * 100, "%.1f") + " %";
}

/// `load`: of all its formats in the song; below 0 none is there.
CStr lineOf(const PluginList::Effect& effect, float load) {
    const PluginList::Entry& entry = *effect.front();
    if (entry.broken()) return extractFileName(entry.file()) + ": " + entry.why;
    CStr text = entry.facts.name;
    if (!entry.facts.vendor.empty()) text += ", " + entry.facts.vendor;
    for (const PluginList::Entry* one : effect)
        text += (one == &entry ? ": " : ", ") + CStr(formatName(one->format()));
    if (load >= 0.0f) text += " (in the song: " + percent(load) + ")";
    return text;
}

CStr factsOf(const PluginList::Entry& entry, int crashes, float load) {
    if (entry.broken()) return entry.path;
    const PluginFacts& f = entry.facts;
    const CStr ended =
        crashes == 0 ? CStr() : ", " + asStr(crashes) + (crashes == 1 ? " crash" : " crashes");
    const CStr works = load < 0.0f ? CStr() : ", " + percent(load) + " of a block";
    return CStr(f.instrument ? "Instrument" : "Effect") + ", " + asStr(f.inputs) + " in, " +
           asStr(f.outputs) + " out, " + asStr(f.params) + " parameters" + works + ended + ": " +
           entry.file();
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
    formats = addField("Format", new CDropdown(win, "formats", 0, 0, formatsWidth, fieldHeight));
    formats->spokenName = "Format of the chosen plug-in";
    wire(formats->onChange, new _COnChange<PluginPage>(this, &PluginPage::formatChosen));
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
         std::initializer_list<CCtrl*>{about, formats, trusted, look, again, all, stop})
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
    std::vector<PluginList::Effect> shown;
    for (const PluginList::Entry& entry : shelf.list.all())
        if (entry.broken()) shown.push_back({&entry});
    for (PluginList::Effect& effect : shelf.list.effects()) shown.push_back(std::move(effect));
    lines.clear();
    list->clearRows();
    int row = -1, format = 0;
    for (const PluginList::Effect& effect : shown) {
        list->add(lineOf(effect, loadOf(effect)));
        std::vector<CStr>& paths = lines.emplace_back();
        for (const PluginList::Entry* one : effect) {
            if (one->path == now) row = int(lines.size()) - 1, format = int(paths.size());
            paths.push_back(one->path);
        }
    }
    list->setIndex(row);
    rowChosen(nullptr);
    formats->setIndex(format);
    formatChosen(nullptr);
    tellCount();
    list->redraw();
}

float PluginPage::loadOf(const PluginList::Effect& effect) const {
    float load = -1.0f;
    for (const PluginList::Entry* one : effect)
        if (const float now = shelf.loadOf(one->path); now >= 0.0f)
            load = std::max(load, 0.0f) + now;
    return load;
}

void PluginPage::tellCount() {
    const bool busy = shelf.scan.busy();
    const int good = int(shelf.list.usable().size()),
              all = int(std::ranges::count_if(shelf.list.all(), [](const PluginList::Entry&e) {
                  return e.good() || e.broken();
              }));
    const CStr text = busy ? "Looking at plug-ins: " + asStr(shelf.scan.done()) + " of " +
                                 asStr(shelf.scan.total())
                           : asStr(good) + " of " + asStr(all) + " can be used";
    if (!(text == count->text)) count->setText(text);
    stop->setEnabled(busy);
}

CStr PluginPage::chosen() const {
    const int at = list->index;
    if (at < 0 || at >= int(lines.size())) return "";
    const std::vector<CStr>& paths = lines[size_t(at)];
    const int format = formats->index;
    return format >= 0 && format < int(paths.size()) ? paths[size_t(format)] : paths.front();
}

void PluginPage::rowChosen(CObject*) {
    formats->items.clear();
    const int at = list->index;
    if (at >= 0 && at < int(lines.size()))
        for (const CStr& path : lines[size_t(at)])
            formats->add(formatName(PluginFile(path).format()));
    formats->setIndex(formats->count() > 0 ? 0 : -1);
    formats->enabled = formats->count() > 1;
    formats->redraw();
    formatChosen(nullptr);
}

void PluginPage::formatChosen(CObject*) {
    const PluginList::Entry* entry = shelf.list.find(chosen());
    again->setEnabled(entry != nullptr);
    about->setText(entry ? factsOf(*entry, shelf.processes->trust.crashes(entry->path),
                                   shelf.loadOf(entry->path))
                         : CStr());
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
