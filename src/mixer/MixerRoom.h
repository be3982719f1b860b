#pragma once

class CMixer;
class EditorTable;
class Workspace;

/// Binds what opens the mixer, and enters its window in the table of editors. Interface thread.
class MixerRoom {
public:
    /// `mixer` outlives it.
    MixerRoom(Workspace& workspace, EditorTable& editors, CMixer& mixer);
};
