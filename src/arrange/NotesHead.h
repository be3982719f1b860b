#pragma once

#include "arrange/RowHead.h"

class CPart;
class EventRows;

/// Head of the row in which the notes of a track are edited: its keys, or the sounds of its kit. A
/// press plays one. Interface thread.
class NotesHead : public RowHead {
public:
    NotesHead(HeadList& list, const ArrangeRow& row);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void show(const ArrangeRow& row) override;
    void refresh() override {}
    std::vector<CCtrl*> stops() override { return {this}; }
    void describe(Description& d, int part) const override;

private:
    CPart* anyPart() const;
    EventRows rows() const; ///< from the head's own corner; there is a part
    void paintKeys(CGraphic* g) const;
    void paintSounds(CGraphic* g) const;

    int topKey = 0, keyHeight = 0;
};
