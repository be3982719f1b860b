#include "gui/CGui.h"

#include "base/Paths.h"
#include "base/SafeFile.h"
#include "gui/Colours.h"
#include "gui/Images.h"
#include "gui/ItemLook.h"
#include "gui/ThemeFile.h"

#include <algorithm>

namespace {

constexpr int64_t largestFile = 256LL << 20;

/// Where controls that paint by the palette find its colours in a theme.
struct PaletteSource {
    PaletteColour colour;
    const CGuiItem2* item;
    int CGuiLook::*field;
};

const PaletteSource paletteSources[] = {
    {&CPalette::window, &clWinBkgnd, &CGuiLook::fillCol},
    {&CPalette::panel, &clPanel, &CGuiLook::fillCol},
    {&CPalette::raised, &clButton, &CGuiLook::fillCol},
    {&CPalette::frame, &clWinBkgnd, &CGuiLook::frameCol},
    {&CPalette::text, &clWinBkgnd, &CGuiLook::textCol},
    {&CPalette::dimText, &clWinBkgnd, &CGuiLook::symbolCol},
    {&CPalette::accent, &clListboxSelected, &CGuiLook::fillCol},
    {&CPalette::record, &clWinCloseMouseOver, &CGuiLook::fillCol},
};

/// Whether that colour can be seen on the item.
bool shows(const CGuiLook& look, int CGuiLook::*field) {
    if (field == &CGuiLook::frameCol) return look.frame == 1;
    return field != &CGuiLook::fillCol || look.fill == fillSolid || look.fill == fillShaded;
}

constexpr int CGuiLook::*lookColours[] = {&CGuiLook::frameCol,  &CGuiLook::fillCol,
                                          &CGuiLook::fillCol2,  &CGuiLook::textCol,
                                          &CGuiLook::symbolCol, &CGuiLook::sepCol};

} // namespace

CGui::CGui() : palette(darkPalette()) {
}

CGui::~CGui() {
    for (int i = 0; i < count; i++) *items[i] = CGuiItem2();
    deleteAll(images);
}

void CGui::init() {
    for (int i = 0; i < count; i++) *items[i] = CGuiItem2();
    count = 0;
    tables.clear();
    colors.clear();
    deleteAll(images);
    int rows = 0;
    const ItemLook* table = toolkitItems(rows);
    addItems(table, rows);
}

void CGui::addItem(const char* key, CGuiItem2* item, int caps, int width, int height) {
    if (count >= maxItems) return;
    *item = CGuiItem2();
    item->id = key;
    item->caps = caps;
    item->width = width;
    item->height = height;
    items[count++] = item;
}

void CGui::addItems(const ItemLook* rows, int rowCount) {
    for (const ItemLook* row = rows; row < rows + rowCount; row++) {
        addItem(row->key, row->item, row->caps, row->width, row->height);
        row->item->linkTo = row->link;
    }
    tables.push_back({rows, rowCount});
}

CGuiItem2* CGui::getItem(int index) const {
    return index >= 0 && index < count ? items[index] : nullptr;
}

CGuiItem2* CGui::findItem(const CStr& key) const {
    for (int i = 0; i < count; i++)
        if (items[i]->id == key) return items[i];
    return nullptr;
}

void CGui::addImage(CImageChunk* image) {
    images.add(image);
}

void CGui::addColor(int color) {
    if (std::find(colors.begin(), colors.end(), color) == colors.end()) colors.push_back(color);
}

// Whole looks.

void CGui::setColours(const CPalette& skin) {
    init();
    for (const Table& table : tables)
        for (int i = 0; i < table.count; i++) applyLook(table.rows[i], skin);
}

void CGui::setPalette(const CPalette& skin) {
    setColours(skin);
    updateAll();
    palette = skin;
    fileName = CStr();
    changed();
}

bool CGui::open(const CStr& file) {
    CMemoryStream in;
    if (getFileSize(file) > largestFile || !in.loadFromFile(file)) return false;
    setColours(darkPalette());
    readTheme(*this, in);
    updateAll();
    fileName = file;
    changed();
    return true;
}

bool CGui::save(const CStr& file) {
    SafeFile safe(file);
    if (!safe.stream()) return false;
    writeTheme(*this, *safe.stream());
    if (!safe.commit()) return false;
    fileName = file;
    return true;
}

// Items.

/// All of an update but the bitmap.
void CGui::settleItem(CGuiItem2* item) {
    if (item->linkTo) {
        static_cast<CGuiLook&>(*item) = *item->linkTo;
        item->linkTo = nullptr;
    }
    const bool fills = item->caps & capFill;
    if (fills && (item->fill == fillSolid || item->fill == fillShaded)) addColor(item->fillCol);
    if (fills && item->fill == fillShaded && item->fillTex == textureGradient)
        addColor(item->fillCol2);
    if ((item->caps & capFrame) && item->frame) addColor(item->frameCol);
    if (item->caps & capText) addColor(item->textCol);
    if (item->caps & capSymbol) addColor(item->symbolCol);
    if ((item->caps & capSep) && item->sep) addColor(item->sepCol);
}

/// The bytes that the theme's bitmaps leave for one more: a small file cannot ask for a picture of
/// the largest size on every item.
int64_t CGui::roomFor(const CGuiItem2* item) const {
    int64_t room = RgbaPicture::largestBytes;
    for (int i = 0; i < count; i++)
        if (items[i] != item) room -= guiBitmapBytes(*items[i]);
    return room;
}

void CGui::updateGuiItem(CGuiItem2* item) {
    settleItem(item);
    renderGuiItem(*item, roomFor(item));
}

void CGui::updateAll() {
    for (int i = 0; i < count; i++) settleItem(items[i]);
    for (int i = 0; i < count; i++) {
        items[i]->bitmap.reset();
        if (items[i]->fill != fillImage) renderGuiItem(*items[i], roomFor(items[i]));
    }
    renderImages();
    readPalette();
}

/// Image by image, so that one at a time is decoded, and only once.
void CGui::renderImages() {
    bool done[maxItems] = {};
    for (int i = 0; i < count; i++) {
        CImageChunk* image = items[i]->fill == fillImage ? items[i]->image : nullptr;
        if (!image || done[i]) continue;
        for (int j = i; j < count; j++) {
            if (items[j]->fill != fillImage || items[j]->image != image) continue;
            renderGuiItem(*items[j], roomFor(items[j]));
            done[j] = true;
        }
        image->image.reset();
    }
}

void CGui::readPalette() {
    const int window = clWinBkgnd.fillCol;
    palette = contrast(window, hexColor(0xffffff)) > contrast(window, hexColor(0)) ? darkPalette()
                                                                                   : lightPalette();
    for (const PaletteSource& from : paletteSources) {
        if (shows(*from.item, from.field)) palette.*from.colour = from.item->*from.field;
    }
}

void CGui::colorReplace(int from, int to) {
    std::erase(colors, to);
    std::replace(colors.begin(), colors.end(), from, to);
    for (int i = 0; i < count; i++)
        for (const auto field : lookColours)
            if (items[i]->*field == from) items[i]->*field = to;
    updateAll();
}
