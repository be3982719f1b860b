#pragma once

#include "base/Geometry.h"

#include <functional>

class CGraphic;
class CPart;
class CSeq;

/// Draws what a part holds into its box: notes by their keys, drum hits by their sounds, clips as
/// waveforms as far as their peaks are known. `xOf` tells where a tick of the song lies.
void drawPartContent(CGraphic* g, CSeq* seq, CPart* part, CRect box, int colour,
                     const std::function<int(double)>& xOf);
