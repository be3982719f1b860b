#include "gui/dialogs/MessageBox.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CDialogWin.h"

namespace {

CApp* boxApp = nullptr; // that the hook, a plain function, shows its windows in

constexpr int margin = CDialogWin::margin, narrowest = 240, widestText = 480;
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

class CMessageWin : public CDialogWin {
public:
    int answer;

    CMessageWin(CWin* owner, const CStr& title, const WrappedText& text, int answers);
    bool keyDown(int key, int mods) override;

private:
    void buttonClicked(CObject* sender);
    CButton* buttonOf(int letter) const;
};

int contentWidth(const CStr& title, const WrappedText& text, int buttons) {
    int count = 0;
    for (const ButtonText& b : buttonTexts) count += (buttons & b.bit) != 0;
    constexpr int gap = CDialogWin::gap;
    const int needed = asMax(text.width, count * (CDialogWin::buttonWidth + gap) - gap);
    const int titled = widthOf(title) + captionHeight + margin;
    return asMax(asMax(needed + 2 * margin, titled), narrowest);
}

int textHeight(const WrappedText& text) {
    const TextFace& font = *xConnection().font;
    return asMax(text.lines, 1) * (font.ascent + font.descent + lineGap);
}

int contentHeight(const WrappedText& text) {
    return margin + textHeight(text) + margin + buttonHeight + CDialogWin::margin;
}

CMessageWin::CMessageWin(CWin* owner, const CStr& title, const WrappedText& text, int answers)
    : CDialogWin(boxApp, owner, title, contentWidth(title, text, answers), contentHeight(text),
                 boxStyle),
      answer(answerOfEscape(answers)) {
    const int wide = clientGroup->width - 2 * margin;
    addControl(new CLabel(this, text.text, margin, margin, wide, textHeight(text)));
    for (const ButtonText& b : buttonTexts)
        if (answers & b.bit)
            addButton(b.text, new _COnChange<CMessageWin>(this, &CMessageWin::buttonClicked))->tag =
                b.bit;
}

/// The button whose text begins with a letter; null without one.
CButton* CMessageWin::buttonOf(int letter) const {
    for (CCtrl* c : buttons->controls) {
        auto* button = static_cast<CButton*>(c);
        if (letter > 0 && sameText(CStr(char(letter)), button->text.sub(0, 1))) return button;
    }
    return nullptr;
}

bool CMessageWin::keyDown(int key, int mods) {
    if (key == keyLeft) return nextCtrl(-1);
    if (key == keyRight) return nextCtrl(1);
    CButton* button = mods & modControl ? nullptr : buttonOf(key);
    if (!button) return CDialogWin::keyDown(key, mods);
    button->click();
    return true;
}

void CMessageWin::buttonClicked(CObject* sender) {
    answer = tagOf(sender);
    hide();
}

int showBox(CWin* owner, const CStr& title, const CStr& text, int buttons) {
    constexpr int all = mbOk | mbYes | mbNo | mbCancel;
    buttons &= all;
    if (!buttons) buttons = mbOk;
    if (!liveDisplay()) return answerOfEscape(buttons);
    if (!owner) owner = boxApp->mainWin;
    CMessageWin box(owner, title, wrap(text), buttons);
    box.showModal();
    return box.answer;
}

} // namespace

void installMessageBox(CApp* app) {
    boxApp = app;
    messageHooks().showMsg = showBox;
}
