#pragma once

class EditorTable;
class Workspace;

/// The windows of controllers. Interface thread.
class SurfacesRoom {
public:
    /// Enters the map window and binds its command.
    SurfacesRoom(Workspace& workspace, EditorTable& editors);
};
