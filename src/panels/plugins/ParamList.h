#pragma once

#include "panels/PanelBody.h"

#include <vector>

class CVST;
class FileRow;
class ParamRow;
class Workspace;

/// The files that a plug-in works with and all of its parameters, one below the other. Interface
/// thread.
class ParamList : public PanelBody {
public:
    ParamList(CWin* win, Workspace& workspace, CVST& plugin);

    void refresh(); ///< takes the values of those that are seen, and all rows anew if their number
                    ///< is another

private:
    void build();

    Workspace& workspace;
    CVST& plugin;
    std::vector<FileRow*> files; ///< among the controls, as the next
    std::vector<ParamRow*> rows;
};
