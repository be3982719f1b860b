#include "setup/GlobalPage.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CTabs.h"
#include "setup/CSetupWin.h"
#include "ui/Options.h"
#include "ui/Workspace.h"

#include <initializer_list>
#include <iterator>

namespace {

constexpr const char* section = "options";
constexpr int listWidth = 200;
constexpr int leastSize = 8, mostSize = 24;                      // of the font
constexpr int leastScale = 100, mostScale = 300, scaleStep = 25; // percent

constexpr struct {
    const char* label;
    Option Options::*option;
} boxes[] = {
    {"Save pos/size of main window", &Options::savePlace},
    {"Prompt for Save changes", &Options::savePrompt},
    {"Random track colour", &Options::randomColour},
    {"Show frequency bands in main toolbar", &Options::spectrum},
    {"Show hints in the line at the bottom", &Options::hints},
    {"Always show modular tab", &Options::tabsAlways},
    {"Outline part color", &Options::outlineParts},
    {"Invert mouse wheel zoom", &Options::invertZoom},
    {"Check for updates automatically", &Options::checkUpdates},
};

void write(const char* key, int value) {
    CIniFile(inifile).writeInteger(section, key, value);
}

} // namespace

GlobalPage::GlobalPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    addStart();
    addOptions();
    addAltKey();
    addText();
}

// What the program begins with: -1 is the first choice.

void GlobalPage::addStart() {
    addHeading("Program");
    start = addField("Startup", new CDropdown(win, "startup", 0, 0, listWidth, fieldHeight));
    for (const char* choice : {"Welcome", "Default Project", "Empty Project", "Last project"})
        start->add(choice);
    start->setIndex(iniReadInt(section, "startwith", -1) + 1);
    wire(start->onChange, new _COnChange<GlobalPage>(this, &GlobalPage::startChanged));
}

void GlobalPage::startChanged(CObject*) {
    write("startwith", start->index - 1);
}

// Check boxes.

void GlobalPage::addOptions() {
    Options& options = setup->workspace.options();
    for (int i = 0; i < int(std::size(boxes)); i++) {
        const Option& option = options.*boxes[i].option;
        if (&option == &options.checkUpdates && !options.hasUpdates) continue;
        auto* box =
            new CCheckbox(win, option.key, boxes[i].label, 0, 0, width - 2 * margin, fieldHeight);
        box->checked = option.on();
        box->tag = i;
        wire(box->onChange, new _COnChange(this, &GlobalPage::optionChecked));
        addField("", box);
    }
}

/// What acts as Alt beside it.
void GlobalPage::addAltKey() {
    altKey = addField("Second key for Alt",
                      new CDropdown(win, "second-alt", 0, 0, listWidth, fieldHeight));
    for (const char* choice : {"None", "Super", "AltGr"}) altKey->add(choice);
    altKey->setIndex(asMinMax(setup->workspace.options().altKey.get(), 0, 2));
    wire(altKey->onChange, new _COnChange<GlobalPage>(this, &GlobalPage::altKeyChanged));
    addNote("With the mouse");
}

void GlobalPage::altKeyChanged(CObject*) {
    setup->workspace.options().altKey.set(altKey->index);
}

void GlobalPage::optionChecked(CCheckbox* box) {
    (setup->workspace.options().*boxes[box->tag].option).set(box->checked);
}

// Text and scale.

void GlobalPage::addText() {
    addHeading("Text and scale");
    auto* smooth =
        new CCheckbox(win, "smooth-text", "Smooth text", 0, 0, width - 2 * margin, fieldHeight);
    smooth->checked = iniReadInt(section, "smooth-text", 1) != 0;
    wire(smooth->onChange, new _COnChange(this, &GlobalPage::smoothChecked));
    addField("", smooth);

    font = addField("Font", new CEdit(win, "font", 0, 0, listWidth, fieldHeight));
    font->setText(iniReadString(section, "font", ""));
    wire(font->onChange, new _COnChange<GlobalPage>(this, &GlobalPage::fontChanged));
    addNote("Empty is that of the system");

    size = addField("Font size", new CDropdown(win, "font-size", 0, 0, listWidth, fieldHeight));
    size->add("Automatic");
    for (int i = leastSize; i <= mostSize; i++) size->add(asStr(i));
    const int pixels = iniReadInt(section, "font-size", 0);
    size->setIndex(pixels > 0 ? asMinMax(pixels, leastSize, mostSize) - leastSize + 1 : 0);
    wire(size->onChange, new _COnChange<GlobalPage>(this, &GlobalPage::sizeChanged));
    addNote("Pixels at 100 %");

    scale = addField("Scale", new CDropdown(win, "scale", 0, 0, listWidth, fieldHeight));
    scale->add("Automatic");
    for (int i = leastScale; i <= mostScale; i += scaleStep) scale->add(asStr(i) + " %");
    const int percent = iniReadInt(section, "scale", 0);
    const int row = (asMinMax(percent, leastScale, mostScale) - leastScale) / scaleStep + 1;
    scale->setIndex(percent > 0 ? row : 0);
    wire(scale->onChange, new _COnChange<GlobalPage>(this, &GlobalPage::scaleChanged));
    addNote("Automatic follows the display");
    addField("", new CLabel(win, "Text and scale change with the next start.", 0, 0,
                            width - 2 * margin, fieldHeight));
}

void GlobalPage::smoothChecked(CCheckbox* sender) {
    write("smooth-text", sender->checked);
}

void GlobalPage::fontChanged(CObject*) {
    CIniFile(inifile).writeString(section, "font", font->text.trim());
}

void GlobalPage::sizeChanged(CObject*) {
    write("font-size", size->index > 0 ? leastSize + size->index - 1 : 0);
}

void GlobalPage::scaleChanged(CObject*) {
    write("scale", scale->index > 0 ? leastScale + (scale->index - 1) * scaleStep : 0);
}
