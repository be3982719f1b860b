#include "shell/MainRibbon.h"

#include "gui/CApp.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CRibbons.h"
#include "shell/CMainWin.h"
#include "shell/Pages.h"

namespace {
constexpr int refreshTicks = 12; // half a second
} // namespace

MainRibbon::MainRibbon(CMainWin* mainWin, CMenu* menuBar) : window(mainWin), bar(menuBar) {
    Option& option = window->options().ribbon;
    if (option.on()) make();
    option.onChange = [this, &option] { show(option.on()); };
}

MainRibbon::~MainRibbon() {
    window->options().ribbon.onChange = nullptr;
}

bool MainRibbon::shown() const {
    return ribbon && ribbon->visible;
}

void MainRibbon::make() {
    ribbon = new CRibbons(window, "ribbon");
    window->addToolbar(ribbon);
    rebuild();
}

void MainRibbon::show(bool on) {
    if (on == shown()) return;
    if (ribbon) {
        window->toggleToolbar();
    } else {
        make();
        window->resized();
        window->redraw();
    }
}

void MainRibbon::rebuild() {
    if (!ribbon) return;
    const CRibbonItem* former = ribbon->getTab(-1);
    const CStr front = former ? former->text : CStr();
    ribbon->clearTabs();
    int tab = 0, frontTab = 0;
    for (const auto* entry : bar->controls) {
        if (entry->id == front) frontTab = tab;
        tab++;
        auto* builder = new _COnChange(this, &MainRibbon::fill);
        ribbon->add(window, entry->id, entry->tag, builder);
    }
    CCompEditor* page = window->pages ? window->pages->current() : nullptr;
    if (page) page->mergeRibbon(ribbon->add(page, page->id, 0, nullptr));
    ribbon->setActiveWin(page ? static_cast<CWin*>(page) : window);
    ribbon->setTabIndex(frontTab);
}

/// Fills the menu of a tab as the bar would.
void MainRibbon::fill(CPopup* popup) {
    for (const auto* entry : bar->controls)
        if (entry->tag == popup->tag && entry->onChange) (*entry->onChange)(popup);
}

void MainRibbon::refresh() {
    if (!shown() || ++ticks % refreshTicks || !window->app->menus.empty()) return;
    ribbon->refresh();
}
