#pragma once

/// Tags of the entries of the menu bar.
enum MenuTag : int {
    menuFile = 1,
    menuEdit = 2,
    menuView = 3,
    menuTrack = 5,
    menuPart = 6,
    menuOptions = 8,
    menuChannel = 9,
    menuSong = 11,
    menuHelp = 12,
};
