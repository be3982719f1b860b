#pragma once

class CQV;

/// What a project begins as.
enum ProjectKind : int {
    kindFile = -1, ///< a file that is opened
    kindEmpty = 0,
    kindDefault = 1,
    kindDrumAndBass = 2,
    kindSequencer = 3,
    kindPortaStudio = 4,
    kindGuitarist = 5,
    kindModular = 6, ///< no song, only components
    kindBeat = 7,    ///< these three have something that plays
    kindBand = 8,
    kindLateNight = 9,
    kindWaltz = 10, ///< the second demo song
    kindDemo = 11,  ///< the demo song
};
constexpr int offeredKinds = 10; ///< that the user can choose, from `kindEmpty` on

/// Of an offered kind, as the user reads it.
const char* projectKindName(int kind);
const char* projectKindDetail(int kind); ///< what it begins with
/// Fills a host that has no more than its devices. The loop is off. Interface thread; takes the
/// graph.
void createProject(CQV* host, int kind);
