#include "shell/CardList.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"

namespace {

constexpr int margin = 10, textGap = 12, nameTop = 5, detailTop = 23, lineHeight = 17;
constexpr double detailShare = 0.3; ///< of the ground in the second line

} // namespace

CardList::CardList(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CListbox(owner, name, l, t, w, h) {
    itemHeight = cardHeight;
    tabStop = true;
}

void CardList::addCard(int kind, const CStr& text, const CStr& detail) {
    cards.push_back({kind, detail});
    add(text);
}

void CardList::paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) {
    const int number = items.indexed(line), ground = groundOf(number);
    const Card& card = cards[size_t(number)];
    const bool strong = number == index && hasKeyFocus();
    const int sign = strong ? look.textCol : win->app->gui->palette.accent;
    signs.draw(g, card.kind,
               asPoint(rect.left + margin, rect.top + (rect.height() - KindSigns::side) / 2), sign,
               ground);
    const int x = rect.left + margin + KindSigns::side + textGap;
    {
        const TextScope bold(g, {.bold = true});
        g->drawText(look.textCol, line->id,
                    asRect(x, rect.top + nameTop, rect.right, rect.top + nameTop + lineHeight),
                    textLeft);
    }
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(strong ? look.textCol : fadeCol(look.textCol, ground, detailShare), card.detail,
                asRect(x, rect.top + detailTop, rect.right, rect.top + detailTop + lineHeight),
                textLeft);
}

void CardList::describe(Description& d, int part) const {
    CListbox::describe(d, part);
    if (part != wholeCtrl) d.help = cards[size_t(part)].detail.asChar();
}
