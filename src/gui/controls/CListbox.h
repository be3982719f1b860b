#pragma once

#include "gui/CGroup.h"

class CScrollbar;
struct CGuiItem2;

/// One line of a list box.
class CListRow : public CObject {
public:
    bool checked = false;
    void* data = nullptr; ///< free for the owner

    explicit CListRow(const CStr& text) { id = text; }
};

/// A list of lines, one of which may be chosen; it scrolls. `onChange` tells that a line was
/// chosen, `onDoubleClick` that one was clicked twice or that Return was pressed on it.
class CListbox : public CGroup {
public:
    ListOf<CListRow> items; ///< owned
    int index = -1;         ///< of the chosen line, -1 none
    bool checkable = false; ///< with a check box in front of each line
    int itemHeight = 16;    ///< pixels
    COnChange *onDoubleClick = nullptr, *onChecked = nullptr; ///< owned

    CListbox(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CListbox() override;

    CListRow* add(const CStr& text);
    CListRow* row(int i) const { return items.items(i); }
    void clearRows();
    /// Chooses a line, -1 none, and brings it into view; does not report.
    void setIndex(int line);
    void resized() override;
    void paint(CGraphic* g, CRect rect) override;
    /// What is typed chooses the next line that begins with it.
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

protected:
    /// Paints one line on its background; `look` is that of a chosen line or of others.
    virtual void paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look);
    int groundOf(int line) const;                 ///< the colour behind it
    int rowsWidth() const { return face->width; } ///< pixels of a line
    void choose(int line);

private:
    CCtrl* face;      ///< one of `controls`
    CScrollbar* bar;  ///< likewise; in lines
    int shownPos = 0; ///< of the bar, as painted
    CStr typed;       ///< the letters so far
    int typedAt = 0;  ///< when the last one came, as `asTimeInMS`

    int visibleRows() const;
    bool typeKey(int key, int mods);
    int rowOfText(const CStr& start) const;
    bool moveKey(int key);
    void toggle(int line);
    void paintRows(CObject* sender, CGraphic* g, CRect rect);
    void rowsMouseDown(CObject* sender, int x, int y, int btn);
    void scrolled(CObject* sender);
};

/// A group whose content is larger than itself, between two scroll bars that show when they are
/// needed. Content goes into `inner`.
class CScrollPanel : public CGroup {
public:
    CGroup* inner; ///< one of `controls`

    CScrollPanel(CWin* win, const CStr& name, int left, int top, int width, int height);
    void resized() override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void reveal(const CCtrl* ctrl) override;

private:
    CScrollbar *horzBar, *vertBar; ///< among `controls`

    void scrolled(CObject* sender);
};
