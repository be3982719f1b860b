#include "panels/plugins/EditorFrame.h"

#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/controls/CForeign.h"
#include "plugins/PluginComp.h"

#include <algorithm>

namespace {

constexpr int unknownSide = 100, margin = 4; // that the panel keeps behind its content

/// What is the song's wherever the pointer is: play, close, and the keys of the function row.
bool isSongKey(int key, int mods) {
    return mods == 0 && (key == ' ' || key == keyEscape || (key <= keyF1 && key >= keyF12));
}

int sideOf(int pluginPixels) {
    return std::clamp(toLogicalSize(pluginPixels), int(EditorFrame::least), int(EditorFrame::most));
}

} // namespace

EditorFrame::EditorFrame(CWin* owner, PluginComp& of)
    : CScrollPanel(owner, "editor", 0, 0, 1, 1), comp(of),
      place(new CForeign(owner, "plug-in", 0, 0, unknownSide, unknownSide)) {
    place->spokenName = "Window of " + of.id;
    place->hostTakes = [this](int key, int mods) { return !keysToPlugin && isSongKey(key, mods); };
    place->onChange = new _COnChange<EditorFrame>(this, &EditorFrame::sized);
    inner->addControl(place);
    take(comp.openEditor(place->socket()));
}

EditorFrame::~EditorFrame() {
    close();
}

void EditorFrame::close() {
    if (open) comp.closeEditor();
    open = false;
}

CPoint EditorFrame::content() const {
    return asPoint(place->width + margin, place->height + margin);
}

void EditorFrame::take(CPoint plugin) {
    if (plugin.x <= 0 || plugin.y <= 0) return;
    known = true;
    place->setBounds(0, 0, sideOf(plugin.x), sideOf(plugin.y));
    resized();
    if (onChange) (*onChange)(this);
}

/// The window inside has given itself a size.
void EditorFrame::sized(CObject*) {
    known = true;
    resized();
    if (onChange) (*onChange)(this);
}

void EditorFrame::refresh() {
    comp.idleEditor();
    if (const auto asked = comp.takeAskedSize()) take(*asked);
}
