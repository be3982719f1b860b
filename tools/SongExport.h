#pragma once

#include "base/CStr.h"

#include <cstdint>

class CQV;
class CSeq;
class RenderUi;
struct RenderOptions;

/// What a render is measured by.
struct Figures {
    int64_t frames = 0;
    double audioSeconds = 0.0, cpuSeconds = 0.0;
    float peakLeft = 0.0f, peakRight = 0.0f;
};

/// Writes the song as the options say: as audio, as a MIDI file, or a file for each track. Gives
/// what went wrong, else an empty text; `lastMessage` is where the last message box leaves its own.
/// `ui` may end it, and nothing is left then.
CStr exportByOptions(CSeq* seq, const RenderOptions& options, RenderUi* ui, Figures& figures,
                     const CStr& lastMessage);
