#pragma once

#include "gui/controls/CListbox.h"
#include "shell/KindSigns.h"

#include <vector>

/// A list of projects, or kinds of them: each line has a sign, a name, and below it what is to be
/// known. Interface thread.
class CardList : public CListbox {
public:
    static constexpr int cardHeight = 44;

    CardList(CWin* win, const CStr& name, int left, int top, int width, int height);

    /// `kind` is a ProjectKind, for the sign.
    void addCard(int kind, const CStr& text, const CStr& detail);
    void describe(Description& d, int part) const override;

protected:
    void paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) override;

private:
    struct Card {
        int kind;
        CStr detail;
    };
    std::vector<Card> cards; ///< by line
    KindSigns signs;
};
