#include "surfaces/SurfacePanel.h"

#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/CSend.h"
#include "engine/ObjectKinds.h"
#include "engine/StoredValue.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Images.h"
#include "surfaces/CCS.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int margin = 8, lineHigh = 16, barHigh = 4, markWide = 4;
constexpr int leastWide = 320, leastHigh = 160, mostWide = 1280, mostHigh = 680;
constexpr int valueWide = 72, buttonWide = 72, buttonHigh = 24, textWide = 160;
constexpr int valueHigh = 2 * lineHigh + barHigh, values = 128;
constexpr float highest = 127.0f;

/// Of a parameter; empty for one that has none.
CStr textOf(const ParamRef& to) {
    if (CComp* comp = asComp(to.object)) return comp->paramText(to.param);
    if (const COutputChannel* strip = asStrip(to.object)) return strip->paramText(to.param);
    const CSend* send = asSend(to.object);
    return send ? send->paramText(to.param) : CStr();
}

} // namespace

SurfacePanel::SurfacePanel(CWin* owner, CCS& of)
    : CCtrl(owner, "panel", 0, 0, leastWide, leastHigh), surface(of) {
}

SurfacePanel::~SurfacePanel() = default;

CPoint SurfacePanel::wanted() const {
    const SurfaceImage& background = surface.def.background;
    CPoint size{std::max(leastWide, background.width), std::max(leastHigh, background.height)};
    for (const Item& item : items()) {
        size.x = std::max(size.x, item.place.right + margin);
        size.y = std::max(size.y, item.place.bottom + margin);
    }
    return {std::min(size.x, mostWide), std::min(size.y, mostHigh)};
}

void SurfacePanel::idle() {
    std::vector<Item> now = items();
    if (now == shown) return;
    shown = std::move(now);
    redraw();
}

// What there is to show.

std::vector<SurfacePanel::Item> SurfacePanel::items() const {
    std::vector<Item> list;
    for (const CControlPages& section : surface.def.sections) {
        const size_t at = size_t(std::max(section.current, 0));
        if (at >= section.pages.size()) continue;
        for (const CControlMap& map : section.pages[at].maps) list.push_back(itemOf(section, map));
    }
    return list;
}

ParamRef SurfacePanel::targetOf(const CControlMap& map) const {
    const bool leads = map.mode == surfaceParam && surface.target;
    return leads ? surface.target(map.param + surface.shift()) : ParamRef{};
}

CStr SurfacePanel::valueText(const CControlMap& map, const CHWCtrl& ctrl) const {
    if (!map.items.empty()) return map.items[size_t(ctrl.val) * map.items.size() / values].c_str();
    const ParamRef to = targetOf(map);
    const CStr text = to ? textOf(to) : CStr();
    return text.empty() ? asStr(ctrl.val) : text;
}

/// The first control of the group speaks for it.
SurfacePanel::Item SurfacePanel::itemOf(const CControlPages& section,
                                        const CControlMap& map) const {
    constexpr int fromRight = 1, fromBottom = 2;
    const bool moves = map.group >= 0 && map.group < int(surface.def.groups.size());
    const CHWCtrlGroup* group = moves ? &surface.def.groups[size_t(map.group)] : nullptr;
    const CHWCtrl* ctrl = group && group->numCtrls() > 0 ? &group->ctrls[0] : nullptr;
    Item item;
    item.kind = map.controlType;
    item.label = map.label;
    item.textColour = map.textColour;
    item.knob = ctrl ? float(ctrl->val) / highest : 0.0f;
    const ParamRef to = targetOf(map);
    item.share =
        to && map.controlType == surfaceValue ? paramShare(to.object, to.param) : item.knob;
    item.waits = ctrl && map.takeOver == mapPickup && ctrl->way.waiting;
    int wide = valueWide, high = valueHigh;
    if (map.controlType == surfaceButton) {
        wide = buttonWide;
        high = buttonHigh;
        item.picture = item.share > 0.0f ? &map.on : &map.off;
    } else if (map.controlType == surfaceLabel) {
        wide = textWide;
        high = lineHigh;
        item.text = map.text;
    } else {
        item.picture = &map.value;
        if (ctrl) item.text = valueText(map, *ctrl);
    }
    if (item.picture && item.picture->png.empty()) item.picture = nullptr;
    if (item.picture) {
        wide = std::clamp(item.picture->width, 1, mostWide);
        high = std::clamp(item.picture->height, 1, mostHigh);
    }
    const int left0 = section.align & fromRight ? width - wide - map.left : map.left;
    const int top0 = section.align & fromBottom ? height - high - map.top : map.top;
    item.place = asRect(left0, top0, left0 + wide, top0 + high);
    return item;
}

// Painting.

void SurfacePanel::draw(CGraphic* g, const SurfaceImage& picture, CRect rect) {
    std::unique_ptr<CImage2>& made = pictures[&picture];
    const int size = int(picture.png.size());
    const bool same = made && made->getSize() == size &&
                      std::memcmp(made->getData(), picture.png.data(), size_t(size)) == 0;
    if (!same) {
        made = std::make_unique<CImage2>();
        made->mode = imagePng;
        made->width = picture.width;
        made->height = picture.height;
        made->data.write(picture.png.data(), size);
    }
    made->draw(g, rect);
}

void SurfacePanel::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    const SurfaceDef& def = surface.def;
    if (!def.background.png.empty()) draw(g, def.background, clientRect());
    if (!def.logo.png.empty())
        draw(g, def.logo,
             asRect(width - margin - def.logo.width, height - margin - def.logo.height,
                    width - margin, height - margin));
    if (shown.empty())
        g->drawText(colours.dimText, "No page of the definition has mappings yet", clientRect(), 0);
    for (const Item& item : shown) paintItem(g, item);
}

/// Without a picture behind it text has the colour of the skin, so that it can be read.
void SurfacePanel::paintItem(CGraphic* g, const Item& item) {
    const CPalette& colours = win->app->gui->palette;
    const CRect& at = item.place;
    const bool plain = surface.def.background.png.empty();
    const int labelColour = plain ? colours.dimText : surface.def.textColour;
    const int textColour = item.picture || !plain ? item.textColour : colours.text;
    if (item.picture) draw(g, *item.picture, at);
    if (item.kind == surfaceButton) {
        if (item.picture) return;
        const bool on = item.share > 0.0f;
        g->fillRound(on ? colours.accent : colours.raised, at);
        g->drawText(on ? textOn(colours.accent) : colours.text, item.label, at, 0);
        return;
    }
    if (item.kind == surfaceLabel) {
        g->drawText(plain ? colours.text : surface.def.textColour,
                    item.text.empty() ? item.label : item.text, at, textLeft);
        return;
    }
    if (item.picture) return g->drawText(textColour, item.text, at, 0);
    g->drawText(labelColour, item.label, asRect(at.left, at.top, at.right, at.top + lineHigh),
                textLeft);
    const int bar = at.bottom - barHigh;
    g->drawText(textColour, item.text, asRect(at.left, at.top + lineHigh, at.right, bar), textLeft);
    const int reached = at.left + asRound(double(item.share) * (at.right - at.left));
    g->fillRect(colours.frame, asRect(at.left, bar, at.right, at.bottom));
    g->fillRect(colours.accent, asRect(at.left, bar, reached, at.bottom));
    if (!item.waits) return;
    const int knob = at.left + asRound(double(item.knob) * (at.right - at.left - markWide));
    g->fillRect(colours.solo, asRect(knob, bar, knob + markWide, at.bottom));
}

void SurfacePanel::describe(Description& d, int part) const {
    if (part == wholeCtrl) {
        d.role = Role::canvas;
        d.name = "Panel";
        return;
    }
    if (part >= int(shown.size())) return;
    const Item& item = shown[size_t(part)];
    d.role = Role::item;
    d.name = item.label.empty() ? "Mapping" : item.label.asChar();
    d.text = item.kind == surfaceButton ? (item.share > 0.0f ? "on" : "off") : item.text.asChar();
    d.bounds = item.place;
    if (item.waits) d.help = "Waits to be picked up";
}
