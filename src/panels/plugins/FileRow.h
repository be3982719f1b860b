#pragma once

#include "gui/controls/CButton.h"
#include "plugins/Plugin.h"

class CVST;
class Workspace;

/// A file that a plug-in works with, as a line: what it is for and its name. A click asks for
/// another one. Interface thread.
class FileRow : public CButton {
public:
    FileRow(CWin* win, Workspace& workspace, CVST& plugin, int number);

    void show(const Plugin::File& file); ///< as the plug-in tells of it
    void click() override;

private:
    Workspace& workspace;
    CVST& plugin;
    const int index;
};
