#pragma once

#include "panels/PanelBody.h"

#include <vector>

class CComp;
class ParamRow;
class Workspace;

/// All parameters of a component, one below the other. Interface thread.
class ParamList : public PanelBody {
public:
    ParamList(CWin* win, Workspace& workspace, CComp& comp);

    void refresh(); ///< takes the values of those that are seen, and all rows anew if their number
                    ///< is another

private:
    void build();

    Workspace& workspace;
    CComp& comp;
    std::vector<ParamRow*> rows; ///< among the controls
};
