#pragma once

#include "base/CStringList.h"
#include "gui/controls/CEdit.h"

#include <memory>

class CScrollbar;

/// Shows one text of a list, which drops down to choose another. The wheel steps through the list
/// while Control is held. `onChange` tells that another one was chosen.
class CDropdown : public CEdit {
public:
    enum DropMode : int { dropAlways = 0, dropLeft = 2 }; ///< 2: not on the last two squares
    static constexpr int itemHeight = 16;

    CStringList items;     ///< unless an heir has texts of its own
    int index = -1;        ///< chosen row, -1 none
    bool editable = false; ///< may be typed into; only the arrow opens the list
    int dropMode = dropAlways;
    int dropWidth = -1;  ///< of the list; below 0 that of the control
    int maxVisible = 20; ///< rows
    COnChange *onIconClick = nullptr, *onOpen = nullptr; ///< owned

    CDropdown(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CDropdown() override;

    virtual int count() { return items.getCount(); }
    virtual int numItems() { return count(); }
    virtual CStr defaultText() { return index >= 0 ? getItemText(index) : CStr(); }
    virtual void add(const CStr& itemText) { items.append(itemText); }
    virtual CStr getItemText(int i) { return items.get(i); }

    /// -1 or outside the list none. `report` calls `onChange` if that is another one.
    void setIndex(int row, bool report = false);
    void drop(); ///< opens the list; returns when it was closed
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    bool enterText(const std::string& to) override;

    CWin* getDropWin() const { return list.get(); } ///< while the list is open

protected:
    CStr shownText() const override;

private:
    class Rows;
    bool opensAt(int x) const;
    int typedRow();
    void makeList();
    void track(int row);
    void place();
    void commit(int row);
    void paintRows(CObject* sender, CGraphic* g, CRect rect);
    void itemsMouseMove(CObject* sender, int x, int y, int btn);
    void itemsMouseUp(CObject* sender, int x, int y, int btn);
    bool itemsKeyDown(CObject* sender, int& key, int mods);
    bool itemsWheel(CObject* sender, int x, int y, int btn, int dy, int dx);
    void scrolled(CObject* sender);

    std::unique_ptr<CWin> list;
    CCtrl* rows = nullptr;     ///< in `list`
    CScrollbar* bar = nullptr; ///< in `list`; in rows
    int visibleRows = 1, tracked = -1;
    bool armed = false; ///< a release chooses: the pointer has been on the rows
};
