#include "gui/dialogs/MessageBox.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"

namespace {

CApp* boxApp = nullptr; // that the hook, a plain function, shows its windows in

constexpr int margin = 16, gap = 8, buttonWidth = 88, narrowest = 240, widestText = 480;
constexpr int lineGap = 3; // between lines of a label
constexpr int mostLines = 32;
constexpr int boxStyle = winCaption | winCentre | winEscape;

struct ButtonText {
    int bit;
    const char* text;
};
constexpr ButtonText buttonTexts[] = {
    {mbOk, "OK"}, {mbYes, "Yes"}, {mbNo, "No"}, {mbCancel, "Cancel"}};

struct WrappedText {
    CStr text; ///< with line feeds
    int lines = 0, width = 0;
};

int widthOf(const CStr& text) {
    return xConnection().font->textWidth(text);
}

/// How many characters of a text make its first line: up to a line feed, or as many words as fit,
/// or, of one endless word, as many characters as fit.
int lineLength(const CStr& text) {
    const int length = text.length();
    int lastBlank = -1;
    for (int i = 0; i < length; i++) {
        if (text[i] == '\n') return i;
        if (widthOf(text.sub(0, i + 1)) > widestText)
            return lastBlank > 0 ? lastBlank : asMax(i, 1);
        if (text[i] == ' ') lastBlank = i;
    }
    return length;
}

WrappedText wrap(const CStr& text) {
    WrappedText wrapped;
    CStr rest = text;
    while (!rest.empty() && wrapped.lines < mostLines) {
        const int length = lineLength(rest);
        const CStr line = rest.sub(0, length);
        if (wrapped.lines > 0) wrapped.text += "\n";
        wrapped.text += line;
        wrapped.width = asMax(wrapped.width, widthOf(line));
        wrapped.lines++;
        const bool atBreak = rest[length] == ' ' || rest[length] == '\n';
        rest = rest.sub(length + (atBreak ? 1 : 0), -1);
    }
    return wrapped;
}

class CMessageWin : public CWin {
public:
    int answer;

    CMessageWin(CWin* owner, const CStr& title, const WrappedText& text, int buttons);
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;

private:
    void addButtons(int buttons, int right, int y);
    void buttonClicked(CObject* sender);
    bool moveFocus(int by);
    CButton* buttonAt(int index) const;

    CGroup* row;
};

int contentWidth(const CStr& title, const WrappedText& text, int buttons) {
    int count = 0;
    for (const ButtonText& b : buttonTexts) count += (buttons & b.bit) != 0;
    const int needed = asMax(text.width, count * (buttonWidth + gap) - gap);
    const int titled = widthOf(title) + captionHeight + margin;
    return asMax(asMax(needed + 2 * margin, titled), narrowest);
}

int textHeight(const WrappedText& text) {
    const TextFace& font = *xConnection().font;
    return asMax(text.lines, 1) * (font.ascent + font.descent + lineGap);
}

int contentHeight(const WrappedText& text) {
    return margin + textHeight(text) + margin + buttonHeight + margin;
}

CMessageWin::CMessageWin(CWin* owner, const CStr& title, const WrappedText& text, int buttons)
    : CWin(boxApp, owner, title, 0, 0, contentWidth(title, text, buttons) + 2 * borderSize,
           contentHeight(text) + 2 * borderSize + captionHeight, boxStyle),
      answer(answerOfEscape(buttons)) {
    const int wide = clientGroup->width, y = margin + textHeight(text) + margin;
    auto* label = new CLabel(this, text.text, margin, margin, wide - 2 * margin, textHeight(text));
    addControl(label);
    row = new CGroup(this, "buttons", 0, y, wide, buttonHeight);
    addControl(row);
    addButtons(buttons, wide - margin, 0);
}

/// From the right edge on, the last one there.
void CMessageWin::addButtons(int buttons, int right, int y) {
    int count = 0;
    for (const ButtonText& b : buttonTexts) count += (buttons & b.bit) != 0;
    int x = right - count * (buttonWidth + gap) + gap;
    for (const ButtonText& b : buttonTexts) {
        if (!(buttons & b.bit)) continue;
        auto* button = new CButton(this, b.text, b.text, x, y, buttonWidth, buttonHeight);
        button->tag = b.bit;
        button->tabStop = true;
        button->onChange = new _COnChange<CMessageWin>(this, &CMessageWin::buttonClicked);
        row->addControl(button);
        x += buttonWidth + gap;
    }
}

CButton* CMessageWin::buttonAt(int index) const {
    return static_cast<CButton*>(static_cast<CCtrl*>(row->controls.items(index)));
}

bool CMessageWin::moveFocus(int by) {
    const int count = row->controls.getCount();
    const int at = asMax(row->controls.indexed(keyCtrl), 0);
    setKeyCtrl(buttonAt((at + by + count) % count));
    return true;
}

bool CMessageWin::keyDown(int key, int mods) {
    // The keys of a question are its own: the program's shortcuts must not act behind it.
    if (key == keyEscape || (key == keyF1 - 3 && (mods & modAlt))) {
        hide();
        return true;
    }
    if (key == keyLeft) return moveFocus(-1);
    if (key == keyRight || key == keyTab) return moveFocus(mods & modShift ? -1 : 1);
    if (!keyCtrl) setKeyCtrl(buttonAt(0));
    if (keyCtrl->keyDown(key, mods)) return true;
    for (int i = 0; i < row->controls.getCount() && key > 0 && !(mods & modControl); i++) {
        CButton* button = buttonAt(i);
        if (CStr(char(key)).upperCase() != button->text.sub(0, 1)) continue;
        button->click();
        break;
    }
    return true;
}

void CMessageWin::setFocus(bool on) {
    CWin::setFocus(on);
    if (on && !keyCtrl) setKeyCtrl(buttonAt(0));
}

void CMessageWin::buttonClicked(CObject* sender) {
    answer = static_cast<CButton*>(sender)->tag;
    hide();
}

int showBox(CWin* owner, const CStr& title, const CStr& text, int buttons) {
    constexpr int all = mbOk | mbYes | mbNo | mbCancel;
    buttons &= all;
    if (!buttons) buttons = mbOk;
    if (!liveDisplay()) return answerOfEscape(buttons);
    if (!owner) owner = boxApp->mainWin;
    CMessageWin box(owner, title, wrap(text), buttons);
    boxApp->killMenu(nullptr);
    box.showModal();
    return box.answer;
}

} // namespace

void installMessageBox(CApp* app) {
    boxApp = app;
    messageHooks().showMsg = showBox;
}
