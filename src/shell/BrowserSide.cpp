#include "shell/BrowserSide.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "browser/CBrowser.h"
#include "engine/CQV.h"
#include "gui/controls/CSplit.h"
#include "modular/GraphMenus.h"
#include "modular/ModularPage.h"
#include "setup/PluginFoldersWin.h"
#include "shell/CMainWin.h"
#include "shell/Pages.h"
#include "shell/Rooms.h"
#include "ui/IniFolders.h"

namespace {

constexpr int splitWide = 4, leftForPages = 480;
constexpr const char* section = "browser";

} // namespace

BrowserSide::BrowserSide(CMainWin* mainWin, ModularPage* graph)
    : window(mainWin), qv(mainWin->host()),
      openWidth(asMax(iniReadInt(section, "width", CBrowser::usualWidth), CBrowser::leastWidth)) {
    BrowserDeeds deeds;
    for (const AddedKind& kind : addedKinds()) deeds.components.push_back({kind.text, kind.type});
    const auto onGraph = [this](auto&& add) {
        window->pages->showFirst();
        add();
    };
    deeds.addComponent = [=](int kind) { onGraph([=] { graph->add(kind); }); };
    deeds.addPlugin = [=](const CStr& path) { onGraph([=] { graph->addPlugin(path); }); };
    deeds.setUpPlugins = [this] { setUpPlugins(); };
    browser = new CBrowser(window, *window, std::move(deeds));
    browser->visible = iniReadInt(section, "visible", 0) != 0;
    browser->width = openWidth;
    window->addControl(browser);
    split = new CSplit(window, "browsersplit", 0, 0, splitWide, 1);
    split->minSize = CBrowser::leastWidth / 2;
    split->maxSize = CBrowser::leastWidth;
    split->target = browser;
    split->spokenName = "Width of the browser";
    window->addControl(split);
    if (browser->visible) browser->shown();
    Commands& commands = window->commands();
    commands.bind(
        "browser", [this] { show(!browser->visible); }, {}, [this] { return browser->visible; });
    commands.bind("searchall", [this] {
        if (!browser->visible) show(true);
        browser->takeKeys();
    });
}

void BrowserSide::show(bool on) {
    browser->visible = on;
    if (on) {
        browser->width = openWidth;
        browser->shown();
    }
    window->resized();
    window->redraw();
}

int BrowserSide::layout(int top, int below) {
    const CGroup* client = window->clientGroup;
    if (browser->width == 0) browser->visible = false; // dragged shut
    if (browser->visible) openWidth = browser->width;
    split->visible = browser->visible;
    if (!browser->visible) return 0;
    const int wide = asMin(openWidth, asMax(client->width - leftForPages, CBrowser::leastWidth));
    const int high = asMax(client->height - top - below, 1);
    browser->setBounds(0, top, wide, high);
    browser->resized();
    split->setBounds(wide, top, splitWide, high);
    return wide + splitWide;
}

void BrowserSide::idle() {
    browser->idle();
}

void BrowserSide::setUpPlugins() {
    PluginFoldersWin(window, qv).showModal();
    window->rooms->plugins.refresh();
    qv->changedFolders = foldersPlugin;
    qv->hostNotices.raise(HostNotice::folders);
}

void BrowserSide::writeSettings() const {
    CIniFile ini(inifile);
    ini.writeInteger(section, "visible", browser->visible);
    ini.writeInteger(section, "width", openWidth);
    browser->writeSettings();
}
