#pragma once

#include "sequencer/play/AudioVoices.h"

class CGroove;
class CMIDIQ;
class CSubTrack;
struct CPlayStruct;

/// Helpers of playback. Graph holder.

/// Sends the value 0 to 1 of an automation lane at a frame of the block. With a `pointer`, a value
/// equal to the last one is left out. A negative `channel` counts as 0; other lanes do nothing.
void insertEvent(CSubTrack* lane, CMIDIQ* queue, double frame, float value, CPlayStruct* pointer,
                 int channel);

/// How far the swing table moves an event, in ticks.
int groove(const CGroove* table, int tick);
/// How far ahead of its tick it may bring an event at most, in ticks.
double grooveLead(const CGroove* table);

/// What an audio event that stands at `tick` is started with, by a voice at tick `songPos`.
VoiceStart clipStart(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
                     int delay);

/// Value at the fraction `t` of a segment of automation. Shape 1 holds `from`, 0 bends by `curve`,
/// others give 0.
float getPoint(int shape, float from, float to, float t, float curve);
