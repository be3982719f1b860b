#pragma once

#include "gui/CGroup.h"

#include <functional>

class CButton;
class CDropdown;
class CMap;
class CQV;
class CValue;

/// What a map leads to, for people: "Bass, Cutoff".
CStr mapTargetText(const CMap* map);

/// One row of the map window: the controller and what it leads to. Interface thread.
class CMapPanel : public CGroup {
public:
    static constexpr int rowHeight = 28;

    /// The columns behind the target, as offsets from the right edge.
    struct Columns {
        static constexpr int controller = 384, low = 308, high = 252, mode = 196, learn = 84,
                             del = 28;
    };

    /// `told` is told what to do when the row learns.
    CMapPanel(CWin* win, CQV* host, CMap* map, int top, int width,
              std::function<void(const CStr&)> told);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;
    void refresh();   ///< shows what the map has now
    void updateLed(); ///< the light follows what was passed on; interface tick
    CMap* shown() const { return map; }

private:
    CValue* addValue(const char* key, const char* told, const char* spoken,
                     void (CMapPanel::*changed)(CObject*));
    CValue* addValue(CValue* value, const char* told, const char* spoken,
                     void (CMapPanel::*changed)(CObject*));
    void ccChanged(CObject* sender);
    void minChanged(CObject* sender);
    void maxChanged(CObject* sender);
    void modeChanged(CObject* sender);
    void learnClicked(CObject* sender);
    void deleteMapClicked(CObject* sender);

    CQV* host;
    CMap* map;
    std::function<void(const CStr&)> tell;
    CValue *controller, *low, *high;
    CDropdown* mode;
    CButton *learn, *del;
    CStr target;
    int light = 0; ///< ticks that it still shines
    bool waits = false;
};
