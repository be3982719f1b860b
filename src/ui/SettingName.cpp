#include "ui/SettingName.h"

#include "gui/CGraphic.h"
#include "gui/Fonts.h"
#include "gui/Palette.h"

void paintSettingName(CGraphic* g, const CPalette& colours, const CStr& name, int width) {
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(colours.dimText, name, asRect(0, 0, width, settingNameHeight), 0);
}
