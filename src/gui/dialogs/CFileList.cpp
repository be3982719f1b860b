#include "gui/dialogs/CFileList.h"

#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"

#include <sys/stat.h>

#include <ctime>

namespace {

constexpr int rowHeight = 20, columnGap = 16, leastName = 200;
constexpr int margin = 8, iconWidth = 14, iconHeight = 11, textLeftEdge = margin + iconWidth + 8;

void drawFolder(CGraphic* g, int color, int x, int y) {
    g->fillRect(color, asRect(x, y, x + iconWidth / 2 - 1, y + 2));
    g->fillRect(color, asRect(x, y + 2, x + iconWidth, y + iconHeight));
}

/// A text cut so that it fits, with three dots at its end if something is missing.
CStr fitText(const CGraphic* g, const CStr& text, int width) {
    if (g->textWidth(text) <= width) return text;
    const CStr dots = "...";
    int low = 0, high = text.length(); // characters that fit, and that do not
    while (low + 1 < high) {
        const int middle = (low + high) / 2;
        (g->textWidth(text.sub(0, middle) + dots) <= width ? low : high) = middle;
    }
    while (low > 0 && (text[low] & 0xc0) == 0x80) low--; // not within a character
    return text.sub(0, low) + dots;
}

} // namespace

CStr sizeText(int64_t bytes) {
    constexpr double unit = 1024;
    const char* const names[] = {" KB", " MB", " GB", " TB"};
    if (bytes < int64_t(unit)) return asStr(int(bytes)) + " B";
    double size = double(bytes) / unit;
    size_t at = 0;
    // 1023.95 would be shown as 1024.0 of the smaller unit.
    for (; size >= unit - 0.05 && at + 1 < std::size(names); at++) size /= unit;
    return asStrFormat(size, "%.1f") + names[at];
}

CStr dateText(int64_t time) {
    const time_t seconds = time_t(time);
    tm local{};
    char text[32] = {};
    if (!localtime_r(&seconds, &local)) return CStr();
    return std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local) ? CStr(text) : CStr();
}

CFileList::CFileList(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CListbox(owner, name, l, t, w, h) {
    itemHeight = rowHeight;
    CFileList::resized();
}

CFileList::~CFileList() {
    delete onUp;
}

bool CFileList::setFolder(const CStr& path, bool keep) {
    CStringList folders, files;
    if (!readDir(path, filter, &folders, foldersOnly ? nullptr : &files, true)) return false;
    const CStr former = keep && chosen() ? chosen()->id : CStr();
    clearRows();
    folder = addSep(path);
    folderCount = folders.count();
    for (const CStringItem* name : folders.list) addItem(name->text, true);
    for (const CStringItem* name : files.list) addItem(name->text, false);
    resized();
    if (!choose(former)) setIndex(-1);
    return true;
}

void CFileList::addItem(const CStr& name, bool isFolder) {
    CListRow* line = new CFileItem(name, isFolder);
    items.add(line);
}

bool CFileList::choose(const CStr& name) {
    int line = 0;
    for (const CListRow* at : items) {
        if (at->id == name) {
            setIndex(line);
            return true;
        }
        line++;
    }
    return false;
}

void CFileList::alignItems() {
    const int room = rowsWidth() - textLeftEdge - leastName - margin;
    const int forSize = win->graphic->textWidth("1023.9 MB") + columnGap;
    const int forDate = win->graphic->textWidth("2000-00-00 00:00") + columnGap;
    sizeWidth = room >= forSize ? forSize : 0;
    dateWidth = room >= forSize + forDate ? forDate : 0;
}

void CFileList::resized() {
    CListbox::resized();
    alignItems();
}

bool CFileList::keyDown(int key, int mods) {
    if (key == keyBackspace && !mods && onUp) {
        (*onUp)(this);
        return true;
    }
    return CListbox::keyDown(key, mods);
}

void CFileList::paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) {
    const auto* entry = static_cast<const CFileItem*>(line);
    const bool marked = &look == &clListboxSelected;
    const CPalette& colours = win->app->gui->palette;
    const int dim = marked ? look.textCol : colours.dimText;
    const int columns = rect.right - margin - dateWidth - sizeWidth;
    if (entry->folder)
        drawFolder(g, marked ? look.textCol : colours.accent, margin,
                   rect.top + (rect.height() - iconHeight) / 2);
    g->drawText(look.textCol, fitText(g, entry->id, columns - textLeftEdge),
                asRect(textLeftEdge, rect.top, columns, rect.bottom), textLeft);
    struct stat about {};
    if (!sizeWidth || stat((folder + entry->id).asChar(), &about) != 0) return;
    const int right = rect.right - margin;
    if (!entry->folder)
        g->drawText(dim, sizeText(about.st_size),
                    asRect(columns, rect.top, columns + sizeWidth, rect.bottom), textRight);
    if (dateWidth)
        g->drawText(dim, dateText(about.st_mtime),
                    asRect(right - dateWidth, rect.top, right, rect.bottom), textRight);
}
