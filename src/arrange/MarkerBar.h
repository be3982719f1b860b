#pragma once

#include "arrange/PointLane.h"

/// The markers of the song as flags with their names, over the stretch that each spans. The end of
/// that can be dragged too.
class MarkerBar : public PointLane {
public:
    static constexpr int barHeight = 20;

    MarkerBar(CWin* win, ArrangeState& state);
    void describe(Description& d, int part) const override;

protected:
    ListView<CPart> points(CSeq* seq) const override;
    CPart* addPoint(CSeq* seq, int tick, int y) const override;
    void paintGround(CGraphic* g, CRect asked) override;
    CRect boxOf(const CPart* point, const Shift& shift) const override;
    void paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) override;
    bool onEnd(const CPart* point, int x) const override;
    void apply(CSeq* seq, CPart* point, const Shift& shift) override;
    CStr shownText(const CPart* point, const Shift& shift) const override;
    CStr typedText(const CPart* point) const override;
    void typed(CSeq* seq, CPart* point, const CStr& text) override;
    std::vector<double> look(const CPart* point) const override;
    void fillMenu(CPopup* popup, CPart* point) override;
    void chosenEntry(CSeq* seq, CPart* point, int tag) override;

private:
    int endX(const CPart* point, const Shift& shift) const;
};
