#pragma once

#include "base/CStr.h"

#include <vector>

/// The windows of a project as its file holds them.
struct WindowRecords {
    std::vector<std::vector<unsigned char>> pages; ///< payload of each "page" item, in order
    int currentPage = 0;
    int modularPage = 0; ///< 1: the canvas page is in front
    int sidebar[2] = {}; ///< of the modular view: visible, width
};

/// What projects ask of the window layer, and where it leaves what they keep for it. This class by
/// itself is for programs without windows: records pass through it unchanged. Interface thread.
///
/// The eight numbers that are stored with each component lie in its `editorStruct`, those of the
/// map window in the host's `mapStruct`, as the file had them: whoever opens a window clamps them.
class ProjectUi {
public:
    ProjectUi() = default;
    virtual ~ProjectUi() = default;
    ProjectUi(const ProjectUi&) = delete;
    ProjectUi& operator=(const ProjectUi&) = delete;

    WindowRecords windows;

    virtual void gatherWindows() {} ///< before saving: bring `windows` up to date
    virtual void clearWindows() {}  ///< a project goes; `windows` is emptied afterwards
    /// A project was read: make its pages from `windows`, and attach the editors with a `page`
    /// above 0. Without any page, make the usual one.
    virtual void showPages() {}
    virtual void placeMainWindow() {} ///< to the host's `editorStruct`
    virtual void waitCursor(bool) {}
    virtual void projectChanged(const CStr&) {} ///< opened or saved under this path
    virtual void addRecent(const CStr&) {}
};
