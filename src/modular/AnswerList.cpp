#include "modular/AnswerList.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/GuiItem.h"
#include "gui/Keys.h"

#include <string>
#include <utility>

namespace {

constexpr int margin = 8, lineHeight = 16, rowGap = 12;
constexpr int goWidth = 72, goHeight = 20;

} // namespace

AnswerList::AnswerList(CWin* owner) : CCtrl(owner, "answers", 0, 0, 1, 1) {
    tabStop = true;
    spokenName = "Answers";
}

void AnswerList::set(const CStr& asked, GraphAnswer found) {
    question = asked;
    answer = std::move(found);
    chosen = 0;
    redraw();
}

void AnswerList::clear() {
    set("", {});
}

std::vector<CStr> AnswerList::wrapped(const CStr& text) const {
    const int room = width - 2 * margin;
    std::vector<CStr> lines;
    CStr line;
    std::string word;
    const auto flush = [&] {
        const CStr longer = line.empty() ? CStr(word.c_str()) : line + " " + word.c_str();
        if (!line.empty() && textFace({})->textWidth(longer) > room) {
            lines.push_back(line);
            line = word.c_str();
        } else {
            line = longer;
        }
        word.clear();
    };
    for (const char c : std::string(text.asChar()))
        if (c == ' ')
            flush();
        else
            word += c;
    flush();
    lines.push_back(line);
    return lines;
}

/// One for each cause, and one for the note behind them.
std::vector<AnswerList::Row> AnswerList::rows() const {
    std::vector<Row> all;
    int y = margin + int(wrapped(question).size()) * lineHeight + margin;
    const auto add = [&](const CStr& text, bool leads) {
        Row row;
        row.lines = wrapped(text);
        const int from = y;
        y += int(row.lines.size()) * lineHeight;
        if (leads) {
            row.button = asRect(margin, y + 4, margin + goWidth, y + 4 + goHeight);
            y += 4 + goHeight;
        }
        row.area = asRect(0, from, width, y);
        y += rowGap;
        all.push_back(row);
    };
    for (const GraphCause& cause : answer.causes) add(cause.text, cause.blame != nullptr);
    if (!answer.note.empty()) add(answer.note, false);
    return all;
}

void AnswerList::paint(CGraphic* g, CRect) {
    const CPalette& palette = win->app->gui->palette;
    if (question.empty()) {
        int y = margin;
        for (const CStr& line :
             wrapped("Ask about a box, port or cable by its menu: why it is silent, late or loud, "
                     "or what costs time."))
            g->drawText(palette.dimText, line, asRect(margin, y, width, y + lineHeight), textLeft),
                y += lineHeight;
        return;
    }
    {
        const TextScope bold(g, {.bold = true});
        int y = margin;
        for (const CStr& line : wrapped(question)) {
            g->drawText(palette.text, line, asRect(margin, y, width, y + lineHeight), textLeft);
            y += lineHeight;
        }
    }
    int index = 0;
    for (const Row& row : rows()) {
        int y = row.area.top;
        const bool note = index >= int(answer.causes.size());
        for (const CStr& line : row.lines) {
            g->drawText(note ? palette.dimText : palette.text, line,
                        asRect(margin, y, width, y + lineHeight), textLeft);
            y += lineHeight;
        }
        if (!row.button.empty()) {
            drawGuiItem(g, row.button, &clButton);
            g->drawText(clButton.textCol, "Go there", row.button, 0);
            if (hasKeyFocus() && index == chosen) g->frameRect(palette.accent, row.button);
        }
        index++;
    }
}

void AnswerList::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    const std::vector<Row> all = rows();
    for (size_t i = 0; i < all.size(); i++)
        if (all[i].button.contains(x, y) && (btn & modLeft)) pressPart(int(i));
}

bool AnswerList::keyDown(int key, int mods) {
    const int count = accessParts();
    if (mods != 0 || count == 0) return false;
    if (key == Key::keyDown || key == Key::keyUp) {
        chosen = (chosen + (key == Key::keyDown ? 1 : count - 1)) % count;
        redraw();
        return true;
    }
    return key == keyReturn && pressPart(chosen);
}

bool AnswerList::pressPart(int part) {
    if (part < 0 || part >= accessParts()) return false;
    chosen = part;
    redraw();
    CObject* blame = answer.causes[size_t(part)].blame;
    if (blame && onGo) onGo(blame);
    return blame != nullptr;
}

int AnswerList::focusedPart() const {
    return accessParts() > 0 ? chosen : wholeCtrl;
}

void AnswerList::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::listRow;
    if (part == wholeCtrl) {
        d.help = (question + " " + answer.note).asChar();
        return;
    }
    const Row row = rows()[size_t(part)];
    d.name = answer.causes[size_t(part)].text.asChar();
    d.action = "go there";
    d.bounds = intersect(row.area, clientRect());
    d.set(stateSelected, part == chosen);
    d.set(stateFocused, hasKeyFocus() && part == chosen);
}
