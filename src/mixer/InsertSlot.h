#pragma once

#include "gui/TypedText.h"
#include "ui/RoundButton.h"

class CComp;
class CMixerStrip;
class COutputChannel;

/// A place for an insert: its name, a light that switches it, and a line that tells how much of it
/// is heard. A press opens its window or a menu, on an empty place what can come there; a drag
/// takes it to another place, with Control a duplicate. Typed numbers, Page Up and Down and the
/// wheel with Control set how much is heard, Delete takes it out, Control and Return switch it, Alt
/// with Up and Down move it.
class InsertSlot : public RoundButton {
public:
    InsertSlot(CMixerStrip& strip, int index);

    CComp* insert() const; ///< null for an empty place
    const int index;       ///< among the inserts of the strip

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void click() override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override; ///< percent
    bool refresh();
    void showMark(bool on); ///< something dragged would come before it

private:
    /// What is painted.
    struct Shown {
        CStr name;
        bool on = false;
        bool failed = false; ///< a plug-in whose process has ended
        int percent = 100;
        int lowered = 0; ///< pixels that tell the gain reduction
        bool mark = false;
        const COutputChannel* key = nullptr; ///< that it follows; only compared
        bool operator==(const Shown&) const = default;
    };
    void dragAway(CObject*);
    int loweredWidth(float db) const;
    void togglePower();
    void setWet(double share, bool run);
    void dragOver(CObject*, int x, int y, int btn);
    void dropped(CObject*, int x, int y, int btn);

    CMixerStrip& owner;
    TypedText typed;
    void tellHint();
    Shown shown;
    CStr followed; ///< the name of what it follows, empty for its own sound
};
