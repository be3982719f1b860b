#pragma once

#include "gui/controls/CListbox.h"

class CForeign;
class PluginComp;

/// The window that a plug-in draws itself, with scroll bars where there is no room for all of it.
/// The plug-in has it open for as long as this lives. Interface thread.
class EditorFrame : public CScrollPanel {
public:
    static constexpr int least = 16, most = 8192; ///< logical pixels of its sides

    bool keysToPlugin = false; ///< also those that are the song's

    EditorFrame(CWin* win, PluginComp& comp);
    ~EditorFrame() override;

    void close();           ///< the plug-in's part of the end; nothing follows
    void refresh();         ///< lets the plug-in draw, and takes the size that it asks for
    CPoint content() const; ///< the size that shows all of it
    bool isSized() const { return known; } ///< the plug-in has told how large that is

private:
    void take(CPoint plugin); ///< in its own pixels; below 1 changes nothing
    void sized(CObject*);

    PluginComp& comp;
    CForeign* place; ///< one of the controls inside
    bool open = true, known = false;
};
