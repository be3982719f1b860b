#include "gui/Keys.h"
#include "ui/Commands.h"

namespace {

constexpr int shift = modShift, control = modControl, controlShift = modControl | modShift;

constexpr int functionKey(int number) {
    return keyF1 - (number - 1);
}

struct Row {
    const char *name, *label;
    int group;
    int key = 0, mods = 0;
};

constexpr Row rows[] = {
    {"mixer", "Mixer", groupGlobal, functionKey(9)},
    {"browser", "Browser", groupGlobal, functionKey(3)},
    {"setup", "Setup", groupGlobal, functionKey(6)},
    {"find", "Find", groupGlobal, 'f', control},
    {"edit", "Edit", groupGlobal, 'e', control},
    {"editinplace", "Edit in-place", groupGlobal, 'e'},
    {"rename", "Rename", groupGlobal, 'r', control},
    {"render", "Export Project (wav, aif, mp3)", groupGlobal, functionKey(5)},
    {"priorpage", "Prior page", groupGlobal, functionKey(1)},
    {"nextpage", "Next page", groupGlobal, functionKey(2)},
    {"priorprog", "Prior Program", groupGlobal, '8'},
    {"nextprog", "Next Program", groupGlobal, '9'},
    {"closeall", "Close all", groupGlobal},
    {"spectrum", "Spectrum", groupGlobal},
    {"hints", "Hints", groupGlobal},
    {"ribbon", "Ribbon", groupGlobal},
    {"about", "About...", groupGlobal},
    {"metronome", "Metronome", groupGlobal, 'c'},
    {"new", "New...", groupFile, 'n', control},
    {"open", "Open...", groupFile, 'o', control},
    {"save", "Save", groupFile, 's', control},
    {"saveas", "Save as...", groupFile, 's', controlShift},
    {"openlast", "Open last", groupFile, 'l', control},
    {"setdefault", "Set as Default Project", groupFile},
    {"exportmidi", "Export to MIDI file...", groupFile},
    {"importaudio", "Import audio...", groupFile},
    {"importmidi", "Import MIDI file...", groupFile},
    {"importsound", "Import sound or clip...", groupFile},
    {"exit", "Exit", groupFile},
    {"undo", "Undo", groupEdit, 'z', control},
    {"redo", "Redo", groupEdit, 'y', control},
    {"duplicate", "Duplicate", groupEdit, 'd', control},
    {"delete", "Delete", groupEdit, keyDelete},
    {"selectAll", "Select All", groupEdit, 'a', control},
    {"cut", "Cut", groupEdit, 'x', control},
    {"copy", "Copy", groupEdit, 'c', control},
    {"paste", "Paste", groupEdit, 'v', control},
    {"play", "Play", groupTransport, keyReturn},
    {"record", "Record", groupTransport, 'r'},
    {"stop", "Stop", groupTransport, '0'},
    {"loop", "Loop", groupTransport, 'l'},
    {"rewind", "Rewind to start", groupTransport, '3'},
    {"rewindToPlay", "Rewind to last play", groupTransport, '5'},
    {"preview", "Note preview", groupArrange, 'p'},
    {"mute", "Mute", groupArrange, 'm'},
    {"solo", "Solo", groupArrange, 's'},
    {"mutepart", "Mute part", groupArrange, 'm', control},
    {"zoomin", "Zoom in", groupGlobal, '+'},
    {"zoomout", "Zoom out", groupGlobal, '-'},
    {"opencomp", "Show track comp", groupArrange, ' ', control},
    {"editexternal", "Edit external", groupArrange, 'e', controlShift},
    {"splitatcursor", "Split at cursor", groupArrange, 'k', control},
    {"insertbars", "Insert bars", groupArrange, 'i', shift},
    {"removebars", "Remove bars", groupArrange, 'r', shift},
    {"leftlocator", "Left locator", groupGlobal, '1'},
    {"rightlocator", "Right locator", groupGlobal, '2'},
    {"playselection", "Play selection", groupGlobal, keyReturn, shift},
    {"loopselection", "Loop selection", groupGlobal, 'p', control},
    {"chstrip", "Channel strip", groupArrange, functionKey(7)},
    {"addtrack", "Add track", groupArrange, 'i', control},
    {"addaudio", "Add audio track", groupArrange},
    {"adddrum", "Add drum track", groupArrange},
    {"addfolder", "Add folder", groupArrange},
    {"armtrack", "Arm track", groupArrange},
    {"locktrack", "Lock track", groupArrange},
    {"foldtrack", "Open or close track", groupArrange},
    {"trackcolour", "Track colour...", groupArrange},
    {"trackup", "Move track up", groupArrange},
    {"trackdown", "Move track down", groupArrange},
    {"deletetrack", "Delete track", groupArrange},
    {"muteall", "(Un)mute all tracks", groupArrange},
    {"soloall", "(Un)solo all tracks", groupArrange},
    {"zoomselection", "Zoom selection", groupArrange, '+', controlShift},
    {"quantize", "Quantize", groupGlobal, 'q', control},
    {"snap", "Snap", groupArrange, 'x'},
    {"snapPrior", "Snap prior", groupArrange, 'x', controlShift},
    {"snapNext", "Snap next", groupArrange, 'x', shift},
    {"autoscroll", "Autoscroll", groupArrange, 'j'},
    {"nextbeat", "Next beat", groupGlobal, '6'},
    {"priorbeat", "Prior beat", groupGlobal, '4'},
    {"octup", "Scroll octave up", groupArrange, keyPageUp},
    {"octdown", "Scroll octave down", groupArrange, keyPageDown},
    {"freeze", "Freeze", groupArrange, 'f', controlShift},
    {"glue", "Glue", groupArrange, 'g', control},
    {"unghost", "Un-ghost", groupArrange, 'u', control},
    {"objectbar", "Object-bar", groupArrange, 'o'},
    {"markers", "Markers", groupArrange, 't'},
    {"addmarker", "Add marker", groupArrange, 't', control},
    {"deletemarker", "Delete marker", groupArrange, 't', controlShift},
    {"priormarker", "Prior marker", groupArrange, '<'},
    {"nextmarker", "Next marker", groupArrange, 'z'},
    {"timesig", "Time signature", groupArrange, 'h'},
    {"timesig-add", "Add time signature", groupArrange, 'h', control},
    {"tempo-track", "Tempo track", groupArrange},
    {"bounce", "Bounce to new track", groupArrange, 'b', control},
    {"crossfade", "Crossfade", groupArrange, 'c', shift},
    {"keepplayed", "Keep what I played", groupArrange},
    {"remix", "Remix", groupArrange},
    {"rangetool", "Range", groupArrange},
    {"rippletrack", "Ripple on the track", groupArrange},
    {"rippleall", "Ripple on all tracks", groupArrange},
    {"steprec", "Step record", groupArrange, functionKey(4)},
    {"trackzoomin", "Zoom in track edit", groupArrange, '+', control},
    {"trackzoomout", "Zoom out track edit", groupArrange, '-', control},
};

} // namespace

Commands::Commands() {
    for (const Row& r : rows) actions.add(new CAction(r.group, r.name, r.label, r.key, r.mods));
}
