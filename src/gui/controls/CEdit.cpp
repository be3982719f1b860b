#include "gui/controls/CEdit.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/Utf8.h"

namespace {
constexpr double disabledShare = 0.6;
} // namespace

CEdit::CEdit(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CCtrl(owner, name, l, t, w, h) {
    type = ctrlEdit;
    tabStop = true;
    hooverable = true;
}

CEdit::~CEdit() {
    delete onInput;
}

int CEdit::pixelOf(int place) const {
    return win->graphic->textWidth(text.sub(0, place + 1));
}

/// How far a text that is too long is shifted to the left, so that the caret can be seen.
int CEdit::firstPixel() const {
    return hasKeyFocus() ? asMax(0, pixelOf(cursor) - (width - 2 * textMargin)) : 0;
}

void CEdit::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool focused = hasKeyFocus();
    const int faint = fadeCol(colours.dimText, clValue.fillCol, disabledShare);
    drawGuiItem(g, rect, &clValue);
    if (focused || isHovered()) drawGuiItemEdge(g, rect, clValue, colours.accent);
    if (!focused) {
        g->drawText(enabled ? clValue.textCol : faint, shownText(),
                    sizeRect(rect, textMargin, 0, -textMargin, 0), textLeft);
        return;
    }
    const int shift = textMargin - firstPixel();
    const int from = asMin(anchor, anchor + selLength), to = asMax(anchor, anchor + selLength);
    const CRect marked = asRect(shift + pixelOf(from), 3, shift + pixelOf(to), rect.bottom - 3);
    const CRect line = asRect(shift, 0, rect.right - textMargin, rect.bottom);
    g->drawText(clValue.textCol, text, line, textLeft);
    if (!marked.empty()) {
        const ClipScope scope(g, marked);
        g->fillRect(clListboxSelected.fillCol, asRect(0, 0, marked.width(), marked.height()));
        g->drawText(clListboxSelected.textCol, text,
                    sizeRect(line, -marked.left, -marked.top, -marked.left, -marked.top), textLeft);
    }
    const int caret = shift + pixelOf(cursor);
    g->fillLine(clValue.textCol, asRect(caret, 3, caret + 1, rect.bottom - 3));
}

int CEdit::XToPos(int x) const {
    const int wanted = x - textMargin + firstPixel(), length = text.length();
    int place = -1;
    while (place < length - 1 && (pixelOf(place) + pixelOf(nextPlace(place))) / 2 <= wanted)
        place = nextPlace(place);
    return place;
}

/// The place behind the next character; the end stays.
int CEdit::nextPlace(int place) const {
    const std::string_view all = text.asChar();
    size_t at = size_t(place + 1);
    if (at >= all.size()) return place;
    nextCharacter(all, at);
    return int(at) - 1;
}

/// The place in front of the character before; the start stays.
int CEdit::priorPlace(int place) const {
    int before = -1;
    for (int at = nextPlace(before); at < place; at = nextPlace(at)) before = at;
    return before;
}

void CEdit::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if ((btn & modMiddle) && !(btn & modLeft)) return pasteSelected(x);
    if (!(btn & modLeft)) return;
    win->setKeyCtrl(this);
    if (btn & modDouble)
        selectWord(XToPos(x));
    else
        setCursor(XToPos(x), false);
    redraw();
}

void CEdit::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (!(btn & modLeft) || !isPushed() || !hasKeyFocus()) return;
    setCursor(XToPos(x), true);
    redraw();
}

void CEdit::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modLeft) && hasKeyFocus() && selLength) offerSelected(selection());
}

/// The focus may select all, so it comes last but for the text.
void CEdit::pasteSelected(int x) {
    const CStr piece = selectedText();
    win->setKeyCtrl(this);
    setCursor(XToPos(x), false);
    insertText(piece);
    redraw();
}

void CEdit::setCursor(int place, bool extend) {
    cursor = asMinMax(place, -1, text.length() - 1);
    if (!extend) anchor = cursor;
    selLength = cursor - anchor;
}

void CEdit::selectAll() {
    anchor = -1;
    cursor = text.length() - 1;
    selLength = cursor - anchor;
}

CStr CEdit::selection() const {
    return text.sub(asMin(anchor, anchor + selLength) + 1, asMax(selLength, -selLength));
}

bool CEdit::deleteSelection() {
    if (selLength == 0) return false;
    const int first = asMin(anchor, anchor + selLength);
    text.del(first + 1, asMax(selLength, -selLength));
    setCursor(first, false);
    return true;
}

/// The place behind the space in front of a word that ends at `place`; -1 for the first word.
int CEdit::priorSpace(int place) const {
    while (place >= 0 && text[place] == ' ') place--;
    while (place >= 0 && text[place] != ' ') place--;
    return place;
}

int CEdit::nextSpace(int place) const {
    const int length = text.length();
    place++;
    while (place < length && text[place] == ' ') place++;
    while (place < length && text[place] != ' ') place++;
    return place - 1;
}

void CEdit::selectWord(int place) {
    const int length = text.length();
    int first = place, last = place;
    while (first >= 0 && text[first] != ' ') first--;
    while (last + 1 < length && text[last + 1] != ' ') last++;
    setCursor(first, false);
    setCursor(last, true);
}

void CEdit::setText(const CStr& newText) {
    text = newText;
    setCursor(text.length() - 1, false);
    redraw();
}

void CEdit::setFocus(bool on) {
    if (on) {
        oldText = text;
        cancelled = false;
        if (selectOnFocus) selectAll();
        return;
    }
    selLength = 0;
    anchor = cursor;
    if (!cancelled && (notifyAlways || text != oldText) && onChange) (*onChange)(this);
}

void CEdit::cancel() {
    text = oldText;
    cancelled = true;
    win->setKeyCtrl(nullptr);
}

bool CEdit::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (key == keyEscape) {
        cancel();
        return true;
    }
    if (key == keyReturn) {
        if (commitOnEnter) cancelled = false;
        win->setKeyCtrl(nullptr);
        return true;
    }
    const int selected = selLength;
    if (!editKey(key, mods)) return false;
    if (selLength && selLength != selected) offerSelected(selection());
    redraw();
    return true;
}

bool CEdit::editKey(int key, int mods) {
    if (mods == modControl && commandKey(upperKey(key))) return true;
    return moveKey(key, mods) || (!(mods & (modControl | modAlt)) && typeKey(key));
}

/// By the capital: Caps Lock may be on.
bool CEdit::commandKey(int key) {
    switch (key) {
    case 'A':
        selectAll();
        return true;
    case 'Z':
        text = oldText;
        selectAll();
        return true;
    case 'C':
        if (selLength) copyText(selection());
        return true;
    case 'X':
        if (selLength) copyText(selection());
        deleteSelection();
        return true;
    case 'V':
        insertText(pasteText());
        return true;
    default:
        return false;
    }
}

bool CEdit::moveKey(int key, int mods) {
    const bool byWord = mods & modControl, extend = mods & modShift;
    switch (key) {
    case keyLeft:
        setCursor(byWord ? priorSpace(cursor) : priorPlace(cursor), extend);
        return true;
    case keyRight:
        setCursor(byWord ? nextSpace(cursor) : nextPlace(cursor), extend);
        return true;
    case keyHome:
        setCursor(-1, extend);
        return true;
    case keyEnd:
        setCursor(text.length() - 1, extend);
        return true;
    case keyDelete:
        if (!deleteSelection()) text.del(cursor + 1, nextPlace(cursor) - cursor);
        return true;
    case keyBackspace:
        if (!deleteSelection()) eraseBack(byWord);
        return true;
    default:
        return false;
    }
}

void CEdit::eraseBack(bool word) {
    if (cursor < 0) return;
    const int from = word ? priorSpace(cursor) : priorPlace(cursor);
    text.del(from + 1, cursor - from);
    setCursor(from, false);
}

void CEdit::insertText(const CStr& piece) {
    deleteSelection();
    text.ins(piece, cursor + 1);
    setCursor(cursor + piece.length(), false);
}

bool CEdit::typeKey(int key) {
    constexpr int firstPrintable = 32;
    if (key < firstPrintable) return false;
    deleteSelection();
    if (upperCase && key >= 'a' && key <= 'z') key += 'A' - 'a';
    if (onInput) (*onInput)(this, key, 0);
    if (key > 0) insertText(utf8Of(uint32_t(key)).c_str());
    return true;
}

void CEdit::describe(Description& d, int) const {
    d.role = Role::textField;
    d.text = text.asChar();
    d.set(stateEditable, true);
    const std::string_view bytes = text.asChar();
    const auto characters = [bytes](int place) {
        int count = 0;
        for (size_t at = 0; at < bytes.size() && int(at) <= place; ++count)
            nextCharacter(bytes, at);
        return count;
    };
    const int at = characters(cursor), other = selLength ? characters(anchor) : at;
    d.caret = Description::Caret{at, asMin(at, other), asMax(at, other)};
}

bool CEdit::enterText(const std::string& to) {
    const bool changes = to != text.asChar();
    setText(to.c_str());
    if ((changes || notifyAlways) && onChange) (*onChange)(this);
    return true;
}
