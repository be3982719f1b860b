#pragma once

#include "gui/CCtrl.h"
#include "instruments/ArpSteps.h"

#include <vector>

class CArp;

/// The steps of an arpeggiator's program as bars, on the lines of the keys that it plays with, and
/// the one that sounds. Without keys it shows what a chord would become. Interface thread.
class ArpView : public CCtrl {
public:
    static constexpr int usualHeight = 144;

    ArpView(CWin* win, CArp& arp);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< takes the present settings and what plays; whether that shows

private:
    struct Shape {
        std::vector<int> keys; ///< -60 to 67
        std::vector<double> settings;
        int current = -1; ///< step that sounds, -1 none
        bool operator==(const Shape&) const = default;
    };

    Shape present() const;
    void layOut();

    CArp& arp;
    Shape shape;
    std::vector<ArpStep> steps;
    int lowest = 0, highest = 0; ///< keys of the notes
};
