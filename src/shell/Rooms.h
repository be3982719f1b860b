#pragma once

#include "arrange/ProcessMenu.h"
#include "arrange/SongCommands.h"
#include "arrange/SongImports.h"
#include "arrange/SongRange.h"
#include "arrange/TakeMenu.h"
#include "notes/NoteCommands.h"
#include "render/RenderCommands.h"
#include "ui/EditorTable.h"

#include <memory>

class CSetupWin;

/// All rooms of windows that the program has: the one place that knows them. Each binds its actions
/// and enters its editors. Interface thread.
class Rooms {
public:
    explicit Rooms(Workspace& workspace);
    ~Rooms();
    Rooms(const Rooms&) = delete;
    Rooms& operator=(const Rooms&) = delete;

    EditorTable editors;
    SongRange range;
    SongImports imports;
    ProcessMenu process;
    TakeMenu takes;
    std::unique_ptr<CSetupWin> setup; ///< null until it is opened first

private:
    void openSetup();

    Workspace& workspace;
    const SongCommands song;
    const RenderCommands render;
    const NoteCommands notes;
};
