#pragma once

#include "gui/CWin.h"

#include <vector>

class CPopup;

/// A window inside a window that holds pages: windows that are made or put into it by `winChild`.
/// The keys of a page come through the owner of this area, which keeps the focus of the server;
/// a control of the owner that has the key focus comes first. Interface thread.
class CMDI : public CWin {
public:
    int activeIndex = 0;     ///< which group of pages is in front; this class has one
    CWin* current = nullptr; ///< the page in front, null without one
    ListOf<CWin> pages;      ///< those shown, front-most first; not owned

    /// Becomes the `mdi` of its owner, which outlives it.
    CMDI(CApp* app, CWin* owner, const CStr& name, int left, int top, int width, int height);
    ~CMDI() override; ///< hides its pages and makes them windows without an owner

    bool keyDown(int key, int mods) override; ///< to the page in front
    /// Whether a page is among those that show, in front or beside the one in front.
    bool shows(const CWin* page) const { return pages.contains(page) && inFront(page); }
    bool raiseLast(); ///< brings the last page of the group to the front; false for one alone
    bool keyUp(int key, int mods) override;
    void setFocus(bool on) override;
    void resized() override; ///< maximized pages keep the size of the area
    /// Only its pages are things.
    void describe(Description& d, int part) const override;

    /// Another page is in front, or it has another size: calls `onChange`, unless disabled.
    void changed();
    /// While `off`, in nested calls, nothing is reported.
    void disableChanges(bool off) { silent += off ? 1 : -1; }
    /// The owner got or lost the focus.
    void ownerFocus(bool on);

    /// For the pages, which enter and leave by themselves.
    virtual void pageShown(CWin* page);
    virtual void pageHidden(CWin* page);
    void pageRaised(CWin* page);
    virtual void pageGone(CWin* page); ///< it is being deleted

    /// Adds the places that a page can be put to, to the menu of its caption.
    virtual void addDockMenu(CPopup*, CWin*) {}

protected:
    /// Whether a page belongs to the group in front; the others are not mapped.
    virtual bool inFront(const CWin*) const { return true; }
    /// Maps what belongs to the group in front, and finds the page in front of all.
    void arrange();

private:
    std::vector<CWin*> shownPages() const; ///< a copy: handlers may close pages
    int silent = 0;
};
