#pragma once

#include "gui/CGroup.h"

#include <memory>

class CPopup;

/// A menu bar, for `CWin::addMenu`. One popup serves all its entries: it is filled anew each time
/// that an entry is opened.
class CMenu : public CGroup {
public:
    /// `owner` has a caption or not; the bar takes its width.
    CMenu(CWin* owner, const CStr& name);
    ~CMenu() override;

    /// An entry. `builder`, owned, is called with the popup to fill, whose `tag` is the entry's.
    CCtrl* add(const CStr& text, COnChange* builder, int tag = 0);
    /// Opens the menu of an entry: returns when it has been closed, or at once when it takes the
    /// place of another one. `fromKeys`: its first line is selected.
    void dropMenu(CCtrl* item, bool fromKeys);
    CPopup* getPopup() const { return popup.get(); }
    void clear() override; ///< also while a menu is open, or the keys are on the bar

    void paint(CGraphic* g, CRect rect) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    /// The entry whose menu is open, or that the keys have reached; null without.
    CCtrl* current() const { return marked; }

private:
    class Entry;

    void step(int by);
    bool popupKey(CObject* sender, int& key, int mods);
    bool isOpen() const;
    void mark(CCtrl* item);

    std::unique_ptr<CPopup> popup;
    CCtrl* marked = nullptr; ///< one of `controls`
};
