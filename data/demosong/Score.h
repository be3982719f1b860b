#pragma once

/// The music of the demo song, apart from how it is built: 4/4 at 116, in A minor, with one bar of
/// 2/4 to take breath in. A step is a sixteenth note; sections are counted in bars of sixteen
/// steps.

constexpr float demoBpm = 116.0f;
constexpr int demoStepTicks = 240;
constexpr int stepsPerBar = 16;
constexpr int demoBarTicks = demoStepTicks * stepsPerBar;

/// One note of a line, within a phrase.
struct ScoreNote {
    int bar, step, length; ///< length in steps
    int note;
    int velocity;
};

/// Five voices that sound together for one bar, with the bass under them.
struct ScoreChord {
    int root;
    int voices[5];
};

// Verse: Am9, Fmaj9, Cadd9, G6/9.
constexpr ScoreChord verseChords[] = {
    {33, {57, 60, 64, 67, 71}},
    {29, {53, 57, 60, 64, 67}},
    {36, {55, 60, 62, 64, 67}},
    {31, {55, 59, 62, 64, 69}},
};

// Chorus: Fmaj7, G, Am7, Em7, Fmaj7, G, C, E7.
constexpr ScoreChord chorusChords[] = {
    {29, {53, 57, 60, 64, 69}}, {31, {55, 59, 62, 67, 71}}, {33, {57, 60, 64, 67, 72}},
    {28, {55, 59, 62, 64, 71}}, {29, {53, 57, 60, 64, 69}}, {31, {55, 59, 62, 67, 71}},
    {36, {55, 60, 64, 67, 72}}, {28, {56, 59, 62, 64, 71}},
};

/// Root movement within a bar: step, length, octaves above the root, and semitones above that.
struct BassStep {
    int step, length, octave, velocity;
    int above = 0;
};

constexpr BassStep bassVerse[] = {
    {0, 3, 0, 112}, {3, 2, 0, 84}, {6, 2, 1, 96}, {8, 3, 0, 106}, {11, 2, 0, 82}, {14, 2, 1, 98},
};

constexpr BassStep bassChorus[] = {
    {0, 2, 0, 116}, {2, 1, 0, 72},   {3, 2, 1, 98},   {6, 2, 0, 104}, {8, 2, 0, 112},
    {10, 1, 1, 76}, {11, 2, 0, 100}, {14, 1, 1, 102}, {15, 1, 1, 80},
};

/// The last bar of four: by the fifth to the next root.
constexpr BassStep bassVerseTurn[] = {
    {0, 3, 0, 112},    {3, 2, 0, 84},     {6, 2, 1, 96},      {8, 3, 0, 106},
    {11, 1, 0, 82, 7}, {12, 2, 0, 98, 7}, {14, 2, 0, 102, 2},
};

constexpr BassStep bassChorusTurn[] = {
    {0, 2, 0, 116}, {2, 1, 0, 72},  {3, 2, 1, 98},      {6, 2, 0, 104},      {8, 2, 0, 112},
    {10, 1, 1, 76}, {11, 1, 0, 96}, {12, 2, 0, 104, 7}, {14, 1, 1, 100, -2}, {15, 1, 1, 84},
};

/// Steps of the guitar, which strikes root and fifth: short ones are damped.
constexpr BassStep guitarChorus[] = {
    {0, 3, 1, 104}, {3, 1, 1, 78},  {4, 1, 1, 70},  {6, 2, 1, 98},
    {8, 3, 1, 102}, {11, 1, 1, 76}, {12, 1, 1, 70}, {14, 2, 1, 96},
};

// The first theme, eight bars over the verse.
constexpr ScoreNote themeA[] = {
    {0, 0, 6, 76, 100}, {0, 6, 2, 74, 86}, {0, 8, 4, 72, 92},  {0, 12, 4, 76, 96},
    {1, 0, 6, 81, 106}, {1, 6, 2, 79, 90}, {1, 8, 8, 76, 96},  {2, 0, 3, 79, 100},
    {2, 3, 3, 76, 92},  {2, 6, 2, 74, 86}, {2, 8, 4, 72, 90},  {2, 12, 4, 74, 92},
    {3, 0, 8, 71, 96},  {3, 8, 4, 74, 90}, {3, 12, 4, 76, 94}, {4, 0, 6, 76, 100},
    {4, 6, 2, 74, 86},  {4, 8, 4, 72, 92}, {4, 12, 4, 69, 88}, {5, 0, 6, 72, 96},
    {5, 6, 2, 74, 88},  {5, 8, 4, 76, 96}, {5, 12, 4, 77, 98}, {6, 0, 6, 79, 106},
    {6, 6, 2, 77, 90},  {6, 8, 4, 76, 94}, {6, 12, 4, 74, 90}, {7, 0, 6, 74, 98},
    {7, 6, 2, 76, 92},  {7, 8, 8, 71, 96},
};

// The second theme, eight bars over the chorus.
constexpr ScoreNote themeB[] = {
    {0, 0, 4, 81, 108},  {0, 4, 2, 79, 92},   {0, 6, 4, 81, 102}, {0, 10, 2, 84, 104},
    {0, 12, 4, 79, 96},  {1, 0, 6, 83, 108},  {1, 6, 2, 81, 94},  {1, 8, 4, 79, 98},
    {1, 12, 4, 74, 90},  {2, 0, 4, 76, 98},   {2, 4, 4, 81, 104}, {2, 8, 2, 83, 98},
    {2, 10, 2, 84, 104}, {2, 12, 4, 83, 98},  {3, 0, 8, 79, 104}, {3, 8, 4, 76, 92},
    {3, 12, 4, 79, 98},  {4, 0, 4, 81, 110},  {4, 4, 2, 79, 92},  {4, 6, 4, 81, 102},
    {4, 10, 2, 84, 106}, {4, 12, 4, 86, 108}, {5, 0, 6, 88, 114}, {5, 6, 2, 86, 98},
    {5, 8, 4, 83, 102},  {5, 12, 4, 79, 94},  {6, 0, 4, 84, 108}, {6, 4, 2, 83, 94},
    {6, 6, 4, 79, 100},  {6, 10, 2, 76, 92},  {6, 12, 4, 79, 98}, {7, 0, 6, 80, 106},
    {7, 6, 2, 83, 98},   {7, 8, 8, 76, 102},
};

// A third below, under the repeat of the second theme.
constexpr ScoreNote harmonyB[] = {
    {0, 0, 4, 77, 84}, {0, 6, 4, 77, 80}, {0, 12, 4, 76, 76}, {1, 0, 6, 79, 84}, {1, 8, 4, 74, 78},
    {2, 0, 4, 72, 78}, {2, 4, 4, 76, 82}, {2, 8, 8, 79, 80},  {3, 0, 8, 76, 82}, {3, 8, 8, 71, 76},
    {4, 0, 4, 77, 84}, {4, 6, 4, 77, 80}, {4, 12, 4, 81, 84}, {5, 0, 6, 83, 88}, {5, 8, 4, 79, 80},
    {6, 0, 4, 79, 84}, {6, 6, 4, 76, 80}, {6, 12, 4, 76, 76}, {7, 0, 6, 76, 82}, {7, 8, 8, 71, 80},
};

/// Keys of the drum program, as General MIDI has them.
enum DrumKey : int {
    keyKick = 36,
    keySnare = 38,
    keyClap = 39,
    keyHatClosed = 42,
    keyTomLow = 45,
    keyHatOpen = 46,
    keyTomMid = 47,
    keyCrash = 49,
    keyTomHigh = 50,
    keyRide = 51,
    keyShaker = 70,
};

/// One bar of one drum: a character a step, '.' silent, 'o' soft, 'x' normal, 'X' accented.
struct DrumLine {
    int key;
    const char* steps;
};

constexpr DrumLine drumHats[] = {
    {keyShaker, "x.o.x.o.x.o.x.o."},
    {keyHatClosed, "..x...x...x...x."},
};

constexpr DrumLine drumVerse[] = {
    {keyKick, "X...x...X...x..."},
    {keyClap, "....x.......x..."},
    {keyHatClosed, "o.xoo.xoo.xoo.xo"},
    {keyShaker, "o.x.o.x.o.x.o.x."},
};

constexpr DrumLine drumVerseTurn[] = {
    {keyKick, "X...x...X...x.o."},      {keyClap, "....x.......x..o"},
    {keyHatClosed, "o.xoo.xoo.xoo..."}, {keyHatOpen, "..............x."},
    {keyTomHigh, "............x..."},   {keyTomMid, "..............x."},
};

constexpr DrumLine drumChorus[] = {
    {keyKick, "X...x...X...x..o"},    {keySnare, "....x.......x..."},
    {keyClap, "....x.......x..."},    {keyHatClosed, "xo.oxo.oxo.oxo.o"},
    {keyHatOpen, "..x...x...x...x."}, {keyRide, "x...x...x...x..."},
};

constexpr DrumLine drumChorusTurn[] = {
    {keyKick, "X...x...X...x.x."},      {keySnare, "....x.......x.xX"},
    {keyHatClosed, "xo.oxo.oxo.o...."}, {keyHatOpen, "..x...x...x....."},
    {keyTomHigh, "............Xx.."},   {keyTomMid, "..............x."},
    {keyTomLow, "...............X"},
};

/// The first half of each is the bar of 2/4.
constexpr DrumLine drumBreath[] = {
    {keyKick, "X..x...........x"},    {keySnare, "..o.xxXX........"},
    {keyTomHigh, "....x..........."}, {keyTomMid, "......x........."},
    {keyTomLow, ".......x........"},
};

constexpr DrumLine drumBuild[] = {
    {keySnare, "o...o...o...o..."},
    {keySnare, "o...o...x...x..."},
    {keySnare, "o.o.x.x.o.o.x.x."},
    {keySnare, "ooxxooxxxxxxXXXX"},
};

/// Sections in bars, from the first bar 0.
enum Section : int {
    barIntro = 0,
    barGroove = 4,
    barVerse = 12,
    barTheme = 20,
    barBreak = 28,
    barBuild = 32,
    barChorus = 36,
    barTurn = 44, ///< half a bar
    barChorus2 = 45,
    barOutro = 53,
    barEnd = 59,
};

/// Where a bar begins, in ticks.
constexpr int songTick(int bar) {
    return bar * demoBarTicks - (bar > barTurn ? demoBarTicks / 2 : 0);
}
