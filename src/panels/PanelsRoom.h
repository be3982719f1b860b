#pragma once

class EditorTable;

/// The editing panels of instruments and effects. Interface thread.
class PanelsRoom {
public:
    explicit PanelsRoom(EditorTable& editors);
};
