#pragma once

#include "gui/CGroup.h"

#include <functional>
#include <vector>

class CButton;
class CSampleClip;
class FrameField;
class SampleView;
class Workspace;

/// A sample: its wave, and below that the places in it as numbers. Interface thread.
class SampleBox : public CGroup {
public:
    /// The sample is only touched while it is `alive`.
    SampleBox(CWin* win, Workspace& workspace, CSampleClip* clip, std::function<bool()> alive);

    void resized() override;
    void refresh(); ///< takes the present places

private:
    void zeroClicked(CObject*);

    SampleView* wave; ///< among the controls, as the next
    std::vector<FrameField*> fields;
    CButton* zero;
};
