#pragma once

#include "base/CStr.h"

/// What `sondrava-render` was asked for.
struct RenderOptions {
    int rate = 44100;
    int block = 1024;
    int workers = -1; ///< threads that help, below 0 as many as the machine has processors for
    int bits = 16;
    int chs = 2;
    int factory = -1;     ///< the factory program of all tracks of a MIDI file, -1 as they ask for
    int bitrate = 128;    ///< of MP3, kilobits per second
    double start = 0.0;   ///< ticks
    double length = -1.0; ///< ticks, below 0 to the end of the song
    int tailMs = 0;       ///< after the end, or `tailAuto`
    bool stats = false;
    bool demo = false;
    bool waltz = false;  ///< the second demo song, with `demo`
    bool tracks = false; ///< a file for each track; `output` is a folder
    // Full paths.
    CStr input, output; ///< `output` may be empty where there is something to save
    CStr save;          ///< a project file to write, empty for none
};

/// Reads the command line; false, with what is wrong in `error`.
bool parseOptions(int argc, char** argv, RenderOptions& options, CStr& error);

/// How the program is called.
const char* usage();
