#pragma once

class COSCSound;
class CSynthProg;

/// Leads the usual controllers to a synthesizer sound as it is set: brightness (74), resonance
/// (71), timbre (16), spread (17), grain (18), and the wheel (1) to something that is at 0 in it,
/// so that a wheel at rest leaves the sound alone.
void mapControllers(COSCSound& sound);

/// Gives a program its eight knobs: the controllers that its sounds follow, and levels of the
/// sounds by their names (19 and 80 on), which it maps; sounds of one name share a knob.
void nameMacros(CSynthProg& prog);
