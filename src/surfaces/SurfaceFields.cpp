#include "surfaces/SurfaceFields.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CColorButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CFileWin.h"
#include "surfaces/CCS.h"
#include "surfaces/CSourceValue.h"
#include "surfaces/TakeOverNames.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr int gap = 4, high = 20, labelWide = 88;
constexpr int mostParams = 9999, mostPlace = 4000;

/// Texts as one, a comma behind each but the last.
CStr joined(const std::vector<std::string>& list) {
    std::string all;
    for (const std::string& text : list) all += (all.empty() ? "" : ", ") + text;
    return all.c_str();
}

std::vector<std::string> parted(const CStr& text) {
    std::vector<std::string> list;
    std::istringstream all(text.asChar());
    for (std::string one; std::getline(all, one, ',');)
        if (int(list.size()) < SurfaceDef::mostItems)
            list.emplace_back(CStr(one.c_str()).trim().asChar());
    return list;
}

} // namespace

SurfaceFields::SurfaceFields(CWin* owner, CCS& of, Ways known)
    : CGroup(owner, "fields", 0, 0, 1, 1), surface(of), ways(std::move(known)) {
    addNames();
    addControlFields();
    addMapFields();
    addPanelFields();
    addPresetFields();
    addDeviceFields();
    show(place);
}

CHWCtrl* SurfaceFields::ctrl() const {
    return place.ctrl(surface.def);
}

CControlMap* SurfaceFields::map() const {
    return place.map(surface.def);
}

bool SurfaceFields::asks() const {
    return onDevice() && surface.def.getPreset.size() > 0;
}

bool SurfaceFields::turnsParameter() const {
    return map() && map()->mode == surfaceParam;
}

// Kinds of fields.

template <class T>
T* SurfaceFields::addRow(T* made, const Words& words, std::function<bool()> fill,
                         std::function<void()> store) {
    made->spokenName = words.label;
    made->hint = words.hint;
    made->tabStop = true;
    wire(made->onChange, new _COnChange<SurfaceFields>(this, &SurfaceFields::stored));
    auto* label = new CLabel(win, words.label, 0, 0, labelWide, high);
    label->field = made;
    addControl(label);
    addControl(made);
    rows.push_back({made, label, std::move(fill), std::move(store)});
    return made;
}

void SurfaceFields::addText(const Words& words, std::function<std::optional<CStr>()> get,
                            std::function<void(const CStr&)> set) {
    auto* edit = new CEdit(win, words.key, 0, 0, 1, high);
    edit->commitOnEnter = true;
    addRow(
        edit, words,
        [edit, get] {
            const std::optional<CStr> text = get();
            if (text) edit->setText(*text);
            return text.has_value();
        },
        [edit, set] { set(edit->text); });
}

void SurfaceFields::addNumber(const Words& words, int least, int most, Number of) {
    auto* value = new CValue(win, words.key, 0, 0, 1, high);
    value->min = least;
    value->max = most;
    value->liveUpdate = false;
    value->resetValue = std::max(least, 0);
    addRow(
        value, words,
        [value, of] {
            const int* number = of();
            if (number) value->showValue(*number);
            return number != nullptr;
        },
        [value, of] {
            if (int* number = of()) *number = value->value;
        });
}

void SurfaceFields::addChoice(const Words& words, const std::vector<Choice>& choices, Number of) {
    auto* list = new CDropdown(win, words.key, 0, 0, 1, high);
    for (const Choice& c : choices) list->add(c.text);
    addRow(
        list, words,
        [list, choices, of] {
            const int* number = of();
            if (!number) return false;
            const auto at = std::ranges::find(choices, *number, &Choice::value);
            list->setIndex(at == choices.end() ? -1 : int(at - choices.begin()));
            return true;
        },
        [list, choices, of] {
            int* number = of();
            if (number && list->index >= 0) *number = choices[size_t(list->index)].value;
        });
}

void SurfaceFields::addColour(const Words& words, Number of) {
    auto* colour = new CColorButton(win, words.key, 0, 0, 0, 1, high);
    addRow(
        colour, words,
        [colour, of] {
            const int* number = of();
            if (number) colour->colour = *number;
            return number != nullptr;
        },
        [colour, of] {
            if (int* number = of()) *number = colour->colour;
        });
}

void SurfaceFields::addPicture(const Words& words, std::function<SurfaceImage*()> of) {
    auto* button = new CButton(win, words.key, "", 0, 0, 1, high);
    button->hooverable = true;
    addRow(
        button, words,
        [button, of] {
            const SurfaceImage* image = of();
            if (image)
                button->setText(image->png.empty() ? CStr("None") : CStr(image->name.c_str()));
            return image != nullptr;
        },
        [this, of] { choosePicture(of); });
}

/// The definition may become another one while the dialog shows.
void SurfaceFields::choosePicture(const std::function<SurfaceImage*()>& of) {
    SurfaceImage read;
    if (const SurfaceImage* now = of(); now && now->png.empty()) {
        CFileWin dialog(win, "Picture", ".png", folder, "", false);
        dialog.showModal();
        if (!dialog.result) return;
        folder = dialog.folder;
        read = loadTexture(dialog.path);
        if (read.png.empty())
            return ways.say("No picture could be read from " + extractFileName(dialog.path));
    }
    if (SurfaceImage* image = of()) *image = std::move(read);
}

void SurfaceFields::addDeed(const Words& words, std::function<bool()> has,
                            std::function<void()> deed) {
    auto* button = new CButton(win, words.key, words.label, 0, 0, 1, high);
    button->hooverable = true;
    addRow(button, words, std::move(has), std::move(deed));
    rows.back().label->setText("");
    rows.back().deed = true;
}

void SurfaceFields::stored(CObject* sender) {
    const auto row =
        std::ranges::find_if(rows, [sender](const Row& r) { return r.ctrl == sender; });
    if (row == rows.end()) return;
    row->store();
    if (!row->deed) surface.changed = true;
    refresh();
    if (!row->deed) ways.changed();
}

// The fields.

void SurfaceFields::addNames() {
    addText(
        {"name", "Name", ""},
        [this]() -> std::optional<CStr> {
            const CStr* name = place.name(surface.def);
            return name ? std::optional(*name) : std::nullopt;
        },
        [this](const CStr& text) {
            if (CStr* name = place.name(surface.def)) *name = text;
        });
    addChoice({"align", "Counts from", "The corner of the panel that places count from"},
              {{0, "Top left"}, {1, "Top right"}, {2, "Bottom left"}, {3, "Bottom right"}}, [this] {
                  CControlPages* in =
                      place.kind == SurfacePlace::ofSection ? place.section(surface.def) : nullptr;
                  return in ? &in->align : nullptr;
              });
}

void SurfaceFields::addControlFields() {
    auto* source = new CSourceValue(win, "cc", 0, 0, 1, high);
    source->liveUpdate = false;
    addRow(
        source, {"cc", "Controller", "What the device sends: a controller, a key, pressure, bend"},
        [this, source] {
            if (ctrl()) source->showValue(ctrl()->cc);
            return ctrl() != nullptr;
        },
        [this, source] {
            if (ctrl()) ctrl()->cc = source->value;
        });
    addDeed(
        {"learn", "Learn", "Takes the next control of the device that you move or press"},
        [this] { return ctrl() != nullptr; }, [this] { learnClicked(); });
    addText(
        {"sysex", "Sysex", "What it sends instead, in hexadecimal bytes such as F0 43 10 00 F7"},
        [this] { return ctrl() ? std::optional<CStr>(ctrl()->sysexText.c_str()) : std::nullopt; },
        [this](const CStr& text) {
            if (!ctrl()) return;
            ctrl()->sysexText = text.asChar();
            ctrl()->sysex.data.clear();
            ctrl()->sysex.fromStr(text, false);
        });
    addNumber({"sysexbyte", "Value byte", "The byte of it that is the value, counted from 0"}, 0,
              CSysexData::mostBytes, [this] {
                  return ctrl() && !ctrl()->sysexText.empty() ? &ctrl()->sysex.offset : nullptr;
              });
}

void SurfaceFields::learnClicked() {
    const bool learns =
        surface.learnGroup == place.a && surface.learnCtrl == place.b && place.a >= 0;
    surface.learnGroup = learns ? -1 : place.a;
    surface.learnCtrl = learns ? -1 : place.b;
}

void SurfaceFields::addMapFields() {
    addChoice({"mode", "Does", ""},
              {{surfaceParam, "Parameter"},
               {surfaceBankDown, "Bank -"},
               {surfaceBankUp, "Bank +"},
               {surfaceTrackDown, "Prior track"},
               {surfaceTrackUp, "Next track"},
               {surfacePriorPage, "Prior page"},
               {surfaceNextPage, "Next page"},
               {surfacePageDown, "Page - of its section"},
               {surfacePageUp, "Page + of its section"},
               {surfaceStore, "Only shown"},
               {surfaceProgram, "Program change"},
               {surfaceText, "Text of the preset"}},
              [this] { return map() ? &map()->mode : nullptr; });
    auto* groups = new CDropdown(win, "group", 0, 0, 1, high);
    addRow(
        groups, {"group", "Group", "The controls that do it"},
        [this, groups] {
            groups->items.clear();
            for (const CHWCtrlGroup& g : surface.def.groups) groups->add(g.name);
            groups->setIndex(map() ? map()->group : -1);
            return map() != nullptr;
        },
        [this, groups] {
            if (map()) map()->group = groups->index;
        });
    addNumber({"param", "Parameter", "Of the first control of the group; the others follow"}, 0,
              mostParams, [this] { return turnsParameter() ? &map()->param : nullptr; });
    std::vector<Choice> modes;
    for (int i = 0; i < mapModes; i++) modes.push_back({i, takeOverNames[i]});
    addChoice({"takeover", "Takes over", takeOverHint}, modes,
              [this] { return turnsParameter() ? &map()->takeOver : nullptr; });
}

void SurfaceFields::addPanelFields() {
    addChoice({"shown", "Shown as", "How the panel shows it"},
              {{surfaceValue, "Value"}, {surfaceButton, "Button"}, {surfaceLabel, "Text"}},
              [this] { return map() ? &map()->controlType : nullptr; });
    addNumber({"left", "Left", "Place on the panel"}, 0, mostPlace,
              [this] { return map() ? &map()->left : nullptr; });
    addNumber({"top", "Top", "Place on the panel"}, 0, mostPlace,
              [this] { return map() ? &map()->top : nullptr; });
    addText(
        {"items", "Texts", "Of its values, in their order, with commas between: Off, On"},
        [this] {
            const bool has = map() && map()->controlType == surfaceValue;
            return has ? std::optional<CStr>(joined(map()->items)) : std::nullopt;
        },
        [this](const CStr& text) {
            if (map()) map()->items = parted(text);
        });
    const auto picture = [this](int shown, SurfaceImage CControlMap::*of) {
        return [this, shown, of] {
            return map() && map()->controlType == shown ? &(map()->*of) : nullptr;
        };
    };
    constexpr const char* told = "A PNG file; press again for none";
    addPicture({"picture", "Picture", told}, picture(surfaceValue, &CControlMap::value));
    addColour({"colour", "Text colour", "Of the value on the panel"}, [this] {
        return map() && map()->controlType == surfaceValue ? &map()->textColour : nullptr;
    });
    addPicture({"pictureon", "Picture on", told}, picture(surfaceButton, &CControlMap::on));
    addPicture({"pictureoff", "Picture off", told}, picture(surfaceButton, &CControlMap::off));
}

void SurfaceFields::addPresetFields() {
    addNumber({"sxoffset", "Preset byte", "Of the preset that it shows and sets; -1 none"}, -1,
              CSysexData::mostBytes - 1, [this] { return map() ? &map()->sxOffset : nullptr; });
    addNumber(
        {"sxsize", "Preset bytes", "That its text has in the preset"}, 0, CSysexData::mostBytes,
        [this] { return map() && map()->mode == surfaceText ? &map()->sxDataSize : nullptr; });
}

void SurfaceFields::addDeviceFields() {
    const auto preset = [this](CSysexData SurfaceDef::*bytes, std::string SurfaceDef::*text) {
        return [this, bytes, text](const CStr& typed) {
            surface.def.*text = typed.asChar();
            (surface.def.*bytes).data.clear();
            (surface.def.*bytes).fromStr(typed, false);
        };
    };
    const auto text = [this](std::string SurfaceDef::*of) {
        return [this, of] {
            return onDevice() ? std::optional<CStr>((surface.def.*of).c_str()) : std::nullopt;
        };
    };
    addPicture({"background", "Background", "Of the panel: a PNG file; press again for none"},
               [this] { return onDevice() ? &surface.def.background : nullptr; });
    addPicture({"logo", "Logo", "At the panel's lower right: a PNG file; press again for none"},
               [this] { return onDevice() ? &surface.def.logo : nullptr; });
    addColour({"panelcolour", "Text colour", "Of the panel"},
              [this] { return onDevice() ? &surface.def.textColour : nullptr; });
    addText({"getpreset", "Ask preset",
             "The message that has the device send its preset, in hexadecimal bytes"},
            text(&SurfaceDef::getPresetText),
            preset(&SurfaceDef::getPreset, &SurfaceDef::getPresetText));
    addNumber({"presetbyte", "It begins at", "The byte of the answer where the preset begins"}, 0,
              CSysexData::mostBytes,
              [this] { return asks() ? &surface.def.getPreset.offset : nullptr; });
    addText({"setpreset", "Send preset",
             "The message that brings a preset to the device, with %s in the place of its bytes"},
            text(&SurfaceDef::setPresetText),
            preset(&SurfaceDef::setPreset, &SurfaceDef::setPresetText));
    addDeed(
        {"ask", "Ask now", "Asks the device for its preset"}, [this] { return asks(); },
        [this] {
            if (!surface.requestPreset())
                ways.say("Nothing could be sent: choose the output under \"Feedback to\"");
        });
    addDeed(
        {"send", "Send now", "Sends the preset, as the knobs have changed it"},
        [this] { return onDevice() && surface.preset.defined(); },
        [this] {
            if (!surface.dumpPreset())
                ways.say("Nothing could be sent: it takes a message with %s and an output");
        });
}

// What shows.

void SurfaceFields::show(const SurfacePlace& what) {
    place = what;
    for (const Row& row : rows) row.label->visible = row.ctrl->visible = row.fill();
    for (const Row& row : rows)
        if (row.ctrl->id == "learn")
            static_cast<CButton*>(row.ctrl)->setLit(surface.learnGroup >= 0 &&
                                                    surface.learnGroup == place.a &&
                                                    surface.learnCtrl == place.b);
    resized();
}

void SurfaceFields::resized() {
    int y = 0;
    for (const Row& row : rows) {
        if (!row.ctrl->visible) continue;
        row.label->setBounds(0, y, labelWide, high);
        row.ctrl->setBounds(labelWide, y, std::max(width - labelWide, 1), high);
        y += high + gap;
    }
    redraw();
}

void SurfaceFields::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "What is chosen";
}
