#pragma once

#include "base/Geometry.h"
#include "sequencer/song/Scales.h"

class CGraphic;
class CPart;
class CSeqMouseEdit;
class EventIndex;
class EventRows;
class PixelPaper;
struct NoteFacts;
struct NotePlace;

/// The ground of a piano roll or a kit: black keys are shaded, with a line where two white keys
/// meet, and sounds have lines between them. `scroll` pixels of the rows lie above `rect`. With a
/// scale its keys are marked, and more so its root.
void drawPianoroll(CGraphic* g, CRect rect, const EventRows& rows, int scroll,
                   const Scale& scale = {});

/// What the colour of a note tells besides that it is selected.
enum NoteColours : int { colourVelocity = 0, colourChannel = 1, colourPitch = 2 };
/// Of a note or hit by its channel or its key.
int noteColour(int colours, const NoteFacts& facts);

/// How the events of a part are shown.
struct NoteLook {
    int event = 0, selected = 0; ///< pixel values
    int outline = 0;
    double strength = 1.0;        ///< 0 to 1, over what is there
    bool names = false;           ///< of notes, where they have room
    int colours = colourVelocity; ///< NoteColours
};

/// Paints the notes or hits of the part of the place or of a draft for it, where they meet `asked`:
/// the fuller, the louder they are, and muted ones as an outline. First `drawEvents` for all, and
/// once the paper is gone `drawNoteNames`.
void drawEvents(PixelPaper& paper, const NotePlace& place, const EventIndex& shown,
                const CSeqMouseEdit& edit, const NoteLook& look, CRect asked);
void drawNoteNames(CGraphic* g, const NotePlace& place, const EventIndex& shown,
                   const CSeqMouseEdit& edit, const NoteLook& look, CRect asked);

/// What shorter rows of a drum part, or a draft of it, repeat, and a line where each of them ends.
void drawRowLoops(PixelPaper& paper, const NotePlace& place, CPart* shown,
                  const CSeqMouseEdit& edit, const NoteLook& look, CRect asked);
/// The rectangle between two corners, both included, and its outline with a faint fill.
CRect bandBetween(CPoint a, CPoint b);
void drawBand(CGraphic* g, CRect band, CRect asked);
