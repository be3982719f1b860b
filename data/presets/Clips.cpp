#include "data/presets/Clips.h"

namespace presets {

namespace {

enum Sound : int { kick, snare, clap, closed, open, sixth, seventh, eighth, ninth, tenth };
enum KitNumber : int { room, club, boom, hard, tape, brushes, hands, sparks, hall };

} // namespace

const std::vector<DrumClip>& drumClips() {
    static const std::vector<DrumClip> all = {
        {"Straight rock",
         room,
         {{kick, "X.......X.x.....X.......X.x...x."},
          {snare, "....X.......X.......X.......X..o"},
          {closed, "x.o.x.o.x.o.x.o.x.o.x.o.x.o.x..."},
          {open, "..............................x."}}},
        {"Half-time",
         room,
         {{kick, "X.....x...x.....X..x......x....."},
          {snare, "........X...............X.....o."},
          {ninth, "x...x...x...x...x...x...x...x..."},
          {tenth, "X..............................."}}},
        {"Four on the floor",
         club,
         {{kick, "X...X...X...X..."},
          {clap, "....X.......X..."},
          {closed, "o.o.o.o.o.o.o.oo"},
          {open, "..x...x...x...x."},
          {seventh, "x.o.x.o.x.o.x.o."}}},
        {"Garage skip",
         club,
         {{kick, "X.....x...x.....X....x....x....."},
          {snare, "....X.......X..o....X..o....X..."},
          {closed, "x.x.o.xox.x.o.x.x.x.o.xox.x.o.xo"},
          {sixth, "...o......o..o.....o......o..o.."}}},
        {"Slow boom",
         boom,
         {{kick, "X.....X.........X.......x..x...."},
          {snare, "........X...............X......."},
          {closed, "x.x.x.x.x.xxx.x.x.x.x.x.x.xoxoxo"},
          {sixth, "............o.............o....."}}},
        {"Warehouse",
         hard,
         {{kick, "X...X...X...X.x.X...X...X...X.xx"},
          {clap, "....x.......x.......x.......x..."},
          {closed, "..x...x...x...x...x...x...x...x."},
          {sixth, "......o..o............o..o..o..."}}},
        {"Dusty break",
         tape,
         {{kick, "X.x.......xx....X.x......x......"},
          {snare, "....X..o.o..X..o....X..o.o....Xo"},
          {closed, "x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x."},
          {eighth, "o......................o........"}}},
        {"Brush swing",
         brushes,
         {{kick, "o.......o.......o.......o......."},
          {snare, "....x......ox.......x..o....x..o"},
          {closed, "....x.......x.......x.......x..."},
          {sixth, "X...x..xX...x..xX...x..xX...x..x"}}},
        {"Hand circle",
         hands,
         {{kick, "X.....x...X.....X.....x...X..x.."},
          {snare, "....x.......x.......x.......x..."},
          {closed, "x.ox.ox.x.ox.ox.x.ox.ox.x.ox.oxo"},
          {sixth, "..x..o....x..o....x..o....x..o.."},
          {seventh, "......xo......xo......xo....x.xo"},
          {tenth, "x..x..x...x.x...x..x..x...x.x..."}}},
        {"Circuit",
         sparks,
         {{kick, "X..x..x...X.....X..x..x...X..x.."},
          {snare, "....X.......X.......X.......X..."},
          {closed, "xoxoxoxoxoxoxoxoxoxoxoxoxoxoxoxx"},
          {eighth, "..o..o.....o..o...o..o.....o.oo."},
          {sixth, "..............x...............x."}}},
    };
    return all;
}

const std::vector<NoteClip>& noteClips() {
    static const std::vector<NoteClip> all = {
        {"Walking bass", "Up-right bass",
         "D2:4! F2:4 A2:4 C3:4 | G2:4! B2:4 D3:4 Db3:4 | "
         "C3:4! G2:4 E2:4 G2:4 | A2:4! E2:4 C#2:4 E2:4"},
        {"Driving eighths", "80's Bass",
         "A1:2! A1:2 A1:2? A2:2 A1:2! A1:2 G1:2 A1:2 | F1:2! F1:2 F1:2? F2:2 G1:2! G1:2 G2:2 G1:2"},
        {"Deep pulse", "DeepBass",
         "C2:3! C2:3 -:2 C2:2 Eb2:2 -:2 G1:2? | C2:3! C2:3 -:2 Bb1:4 G1:4"},
        {"Night chords", "Old piano",
         "D3+F3+A3+C4+E4:6 D3+F3+A3+C4+E4:2? -:8 | G2+F3+A3+B3+E4:6 G2+F3+A3+B3+E4:2? -:8 | "
         "C3+E3+G3+B3+D4:6 C3+E3+G3+B3+D4:2? -:8 | A2+G3+Bb3+C#4+F4:10 -:6"},
        {"House stabs", "Eurosynth",
         "-:3 F3+Ab3+C4+Eb4:1! -:2 F3+Ab3+C4+Eb4:2 -:3 F3+Ab3+C4+Eb4:1 -:4 | "
         "-:3 Db3+F3+Ab3+C4:1! -:2 Db3+F3+Ab3+C4:2 -:2 Eb3+G3+Bb3+D4:2! -:4"},
        {"Off-beat bass", "Sub",
         "-:2 F1:2! -:2 F1:2 -:2 F1:2! -:2 Ab1:2 | -:2 Db2:2! -:2 Db2:2 -:2 Eb2:2! -:2 G1:2"},
        {"Minor chords", "Trance", "F3+Ab3+C4+Eb4:16 | Db3+F3+Ab3+C4:8 Eb3+G3+Bb3+D4:8"},
        {"Song chords", "Old piano",
         "A3+C4+E4:4! A3+C4+E4:2? A3+C4+E4:2 A3+C4+E4:4 G3+B3+E4:4 | "
         "F3+A3+C4:4! F3+A3+C4:2? F3+A3+C4:2 G3+B3+D4:4! G3+B3+D4:4"},
        {"Glass figure", "Digital pluck",
         "E5! B4 G4? B4 E5 B4 D5! B4 G4? B4 D5 B4 C5! G4 E4? G4 | "
         "A4! E5 C5? E5 A4 E5 B4! E5 C5? E5 B4 E5 D5! A4 F#4? A4"},
        {"Slow strings", "Strings",
         "A2+E3+C4+E4:16 | F2+F3+C4+A4:8 G2+D3+B3+G4:8 | "
         "A2+E3+C4+A4:16 | F2+F3+A3+C5:8 G2+G3+B3+D5:8"},
        {"Hymn", "Flute",
         "E5:6 D5:2 C5:4 G4:4 | A4:6 C5:2 B4:8 | C5:4 D5:4 E5:4! G5:4 | F5:6 E5:2 D5:8"},
    };
    return all;
}

} // namespace presets
