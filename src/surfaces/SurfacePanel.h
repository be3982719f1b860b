#pragma once

#include "engine/ParamRef.h"
#include "gui/CCtrl.h"
#include "surfaces/SurfaceDef.h"

#include <map>
#include <memory>
#include <vector>

class CCS;
class CImage2;

/// A picture of a controller: each mapping of the current pages at its place, with what it does.
/// Interface thread.
class SurfacePanel : public CCtrl {
public:
    SurfacePanel(CWin* win, CCS& surface);
    ~SurfacePanel() override;
    SurfacePanel(const SurfacePanel&) = delete;
    SurfacePanel& operator=(const SurfacePanel&) = delete;

    CPoint wanted() const; ///< size that has room for all, within limits
    void idle();           ///< paints anew what has changed; interface tick

    void paint(CGraphic* g, CRect rect) override;
    int accessParts() const override { return int(shown.size()); }
    void describe(Description& d, int part) const override;

private:
    /// A mapping as it is shown.
    struct Item {
        CRect place;
        int kind = 0; ///< SurfaceControl
        CStr label, text;
        float share = 0.0f; ///< 0 to 1, of the parameter where there is one
        float knob = 0.0f;  ///< 0 to 1, where the control is
        bool waits = false; ///< to be picked up
        const SurfaceImage* picture = nullptr;
        int textColour = 0;

        bool operator==(const Item&) const = default;
    };

    std::vector<Item> items() const;
    Item itemOf(const CControlPages& section, const CControlMap& map) const;
    ParamRef targetOf(const CControlMap& map) const;
    CStr valueText(const CControlMap& map, const CHWCtrl& ctrl) const;
    void paintItem(CGraphic* g, const Item& item);
    void draw(CGraphic* g, const SurfaceImage& picture, CRect rect);

    CCS& surface;
    std::vector<Item> shown;
    std::map<const SurfaceImage*, std::unique_ptr<CImage2>> pictures;
};
