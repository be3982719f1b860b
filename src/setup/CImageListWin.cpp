#include "setup/CImageListWin.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Images.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/dialogs/CFileWin.h"

namespace {

constexpr int contentWidth = 480, contentHeight = 300, listWidth = 180, rowHeight = 20;

} // namespace

CImageListWin::CImageListWin(CWin* owner, CGui* theme, CImageChunk* chosen)
    : CDialogWin(owner, "Images", contentWidth, contentHeight, dialogStyle & ~winSizable),
      image(chosen), gui(theme), folder(getHomeFolder()) {
    addOkCancel("OK");
    const int high = contentBottom() - margin, right = margin + listWidth + gap;
    list = new CListbox(this, "images", margin, margin, listWidth, high);
    list->itemHeight = rowHeight;
    list->spokenName = "Images";
    list->tabStop = true;
    wire(list->onChange, new _COnChange<CImageListWin>(this, &CImageListWin::listChanged));
    wire(list->onDoubleClick, new _COnChange<CImageListWin>(this, &CImageListWin::opened));
    addControl(list);
    preview = new CCtrl(this, "preview", right, margin, contentWidth - margin - right, high);
    wire(preview->onPaint, new _COnPaint<CImageListWin>(this, &CImageListWin::paintPreview));
    addControl(preview);
    auto* more = new CButton(this, "add", "Add...", margin, contentHeight - margin - buttonHeight,
                             buttonWidth, buttonHeight);
    more->hint = "Add an image from a PNG file";
    more->onChange = new _COnChange<CImageListWin>(this, &CImageListWin::addClicked);
    addControl(more);
    startCtrl = list;
    fill();
    mark(chosen);
}

CImageListWin::~CImageListWin() {
    for (auto* picture : gui->images) picture->reset();
}

void CImageListWin::fill() {
    list->clearRows();
    list->add("None");
    for (auto* picture : gui->images) list->add(picture->id)->data = picture;
}

void CImageListWin::mark(CImageChunk* wanted) {
    if (shown) shown->reset();
    shown = wanted;
    if (shown) shown->cacheImage();
    list->setIndex(gui->images.indexed(wanted) + 1);
    preview->redraw();
}

void CImageListWin::listChanged(CObject*) {
    const CListRow* row = list->row(list->index);
    mark(row ? static_cast<CImageChunk*>(row->data) : nullptr);
}

void CImageListWin::opened(CObject*) {
    accept();
}

void CImageListWin::addClicked(CObject*) {
    CFileWin dialog(this, "Add image", ".png", folder, "", false);
    dialog.showModal();
    if (!dialog.result) return;
    folder = dialog.folder;
    auto added = std::make_unique<CImageChunk>();
    added->open(dialog.path);
    if (added->width < 1) {
        showMsg(this, "Images", "\"" + extractFileName(dialog.path) + "\" is not a PNG image.");
        return;
    }
    CImageChunk* kept = added.release();
    gui->addImage(kept);
    fill();
    mark(kept);
}

void CImageListWin::accept() {
    image = shown;
    CDialogWin::accept();
}

void CImageListWin::paintPreview(CObject*, CGraphic* g, CRect rect) {
    const CPalette& colours = app->gui->palette;
    g->fillRect(colours.panel, rect);
    const CBitmap* picture = shown ? shown->getCache() : nullptr;
    if (picture) {
        const ClipScope inside(g, sizeRect(rect, 1, 1, -1, -1));
        const int x = asMax((rect.width() - picture->width) / 2, 0);
        const int y = asMax((rect.height() - picture->height) / 2, 0);
        g->render(picture, x, y, 0, 0, picture->width, picture->height);
    } else {
        g->drawText(colours.dimText, "No image", rect, 0);
    }
    g->frameRect(colours.frame, rect);
}
