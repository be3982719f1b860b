#pragma once

#include "gui/CWin.h"
#include "gui/controls/CMenuItem.h"

#include <vector>

/// A popup menu. It is filled with `add`, and `popup` runs it until it is closed. Higher than the
/// screen, it scrolls between two buttons.
///
/// A popup with `autoDelete` is made with `new` and deletes itself when it has been closed.
class CPopup : public CWin {
public:
    static constexpr int subMenuDelay = 250; ///< milliseconds
    static constexpr int commandHeight = 20, rowHeight = 16;

    int selected = -1;       ///< index in `items`, -1 none
    int subIndex = 0;        ///< row of a selected block
    ListOf<CMenuItem> items; ///< owned
    int scrollMax = 0;       ///< pixels of content that do not fit
    int scrollDir = 0;       ///< 4 up, 16 down while a scroll button is held

    CPopup(CApp* app, CWin* owner);
    ~CPopup() override;

    CMenuItem* add(int kind, const CStr& text, COnChange* chosen = nullptr);
    CMenuItem* add(const CStr& text, COnChange* chosen) { return add(menuCommand, text, chosen); }
    CPopup* addSub(const CStr& text); ///< an entry with an empty menu of its own: the result
    /// A block of rows, whose texts the delegate tells.
    CMenuItem* addRows(int count, COnGetText* texts, COnChange* chosen);
    void addSeparator(); ///< not at the top, nor behind another
    void clearItems();
    CMenuItem* getItem(int index) const { return items.items(index); }

    /// Opens it with its corner at a point of the screen; returns at once inside another menu, else
    /// when it has been closed. `fromKeys`: the first entry is selected.
    void popup(int x, int y, bool fromKeys = false);
    void popupBelow(CCtrl* ctrl); ///< from its lower left corner, by keys where it has the focus
    void show(bool activate) override;
    bool keyDown(int key, int mods) override; ///< a letter selects the next line it begins
    void onTimer() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

    /// Selects an entry, and row `sub` of a block; -1 nothing. One that cannot be chosen leaves the
    /// selection as it is. `openSub`: its menu opens after `subMenuDelay`.
    void selectItem(int index, int sub, bool scrollTo, bool openSub);
    /// Opens the entry's menu, or calls its `onChange`: `close` closes all menus before, else a
    /// check mark is toggled.
    void executeItem(CMenuItem* item, bool close);
    /// Where an entry lies in this window; of a block, its row `sub`.
    CRect itemRect(const CMenuItem* item, int sub) const;

private:
    CPopup* opener = nullptr;            ///< the menu that this is a sub-menu of
    CCtrl *face, *upButton, *downButton; ///< in the client area
    CPoint wanted;                       ///< the corner asked for
    CPoint openedAt;                     ///< of the pointer
    bool armed = false;                  ///< a release chooses: the pointer has moved or pressed
    bool byKeys = false;                 ///< it is being opened by a key
    int contentHeight = 0, scrolled = 0;

    /// What the keys stop at: an entry, or a row of a block.
    struct Line {
        int index, sub;
    };

    CCtrl* addArea(const char* name);
    CCtrl* addScrollButton(const char* name, int dir);
    void measure();
    int contentWidth() const;
    void place();
    void scrollBy(int pixels);
    void leave();
    bool itemAt(int y, int& index, int& sub) const;
    bool menuKey(int key);
    std::vector<Line> lines() const;
    void selectLine(int line);
    void step(int by);
    void jumpTo(int letter);
    void openSubMenu(CMenuItem* item, bool fromKeys);
    void markInOpener();
    void paintGround(CObject* sender, CGraphic* g, CRect rect);
    void paintItems(CObject* sender, CGraphic* g, CRect rect);
    void paintItem(CGraphic* g, CMenuItem* item, int index);
    void paintScrollButton(CObject* sender, CGraphic* g, CRect rect);
    void itemsMouseDown(CObject* sender, int x, int y, int btn);
    void itemsMouseMove(CObject* sender, int x, int y, int btn);
    void itemsMouseUp(CObject* sender, int x, int y, int btn);
    bool itemsWheel(CObject* sender, int x, int y, int btn, int dy, int dx);
    void beginScroll(CObject* sender, int x, int y, int btn);
    void endScroll(CObject* sender, int x, int y, int btn);
};
