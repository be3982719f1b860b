#pragma once

#include "arrange/ProcessMenu.h"
#include "arrange/SongCommands.h"
#include "arrange/SongImports.h"
#include "arrange/SongRange.h"
#include "arrange/TakeMenu.h"
#include "ui/Options.h"

class EditorTable;

/// What is done to a song whether its window is open or not, and what this window shares with it.
/// Enters the window in the table of editors. Interface thread.
class ArrangeRoom {
public:
    ArrangeRoom(Workspace& workspace, EditorTable& editors);
    ArrangeRoom(const ArrangeRoom&) = delete;
    ArrangeRoom& operator=(const ArrangeRoom&) = delete;

    SongRange range;
    SongImports imports;
    ProcessMenu process;
    TakeMenu takes;

private:
    const SongCommands song;
    Option objectBar; ///< of every editor that has one
};
