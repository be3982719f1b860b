#pragma once

#include "arrange/PointLane.h"

/// The time signatures along the song.
class SignatureLane : public PointLane {
public:
    static constexpr int laneHeight = 20;

    SignatureLane(CWin* win, ArrangeState& state);
    void describe(Description& d, int part) const override;

protected:
    ListView<CPart> points(CSeq* seq) const override;
    CPart* addPoint(CSeq* seq, int tick, int y) const override;
    CRect boxOf(const CPart* point, const Shift& shift) const override;
    void paintGround(CGraphic* g, CRect asked) override; ///< what is in force before the first
    void paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) override;
    void apply(CSeq* seq, CPart* point, const Shift& shift) override;
    CStr shownText(const CPart* point, const Shift& shift) const override;
    CStr typedText(const CPart* point) const override;
    void typed(CSeq* seq, CPart* point, const CStr& text) override;
    std::vector<double> look(const CPart* point) const override;
};
