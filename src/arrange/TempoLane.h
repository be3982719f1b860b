#pragma once

#include "arrange/PointLane.h"

/// The tempo along the song: points with their beats per minute, which are dragged along and up and
/// down, and the way from one to the next.
class TempoLane : public PointLane {
public:
    static constexpr int laneHeight = 48;

    TempoLane(CWin* win, ArrangeState& state);
    void describe(Description& d, int part) const override;

protected:
    ListView<CPart> points(CSeq* seq) const override;
    CPart* addPoint(CSeq* seq, int tick, int y) const override;
    CRect boxOf(const CPart* point, const Shift& shift) const override;
    void paintGround(CGraphic* g, CRect asked) override;
    void paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) override;
    void apply(CSeq* seq, CPart* point, const Shift& shift) override;
    CStr shownText(const CPart* point, const Shift& shift) const override;
    CStr typedText(const CPart* point) const override;
    void typed(CSeq* seq, CPart* point, const CStr& text) override;
    std::vector<double> look(const CPart* point) const override;
    void fillMenu(CPopup* popup, CPart* point) override;
    void chosenEntry(CSeq* seq, CPart* point, int tag) override;

private:
    struct Scale {
        double low, high;
    };
    Scale scale() const; ///< around all tempos of the song
    int yOf(double bpm) const;
    double bpmOf(const CPart* point, const Shift& shift) const;
};
