#pragma once

#include <memory>

class CSongTrack;
class DragHandler;
class HeadList;
class RowHead;
enum class TrackSwitch;

// What a drag on the heads does; a click without one is part of it.

/// Brings a switch of all tracks that are passed to the state that the first one comes to. The
/// tracks that are selected with the first go with it. One step.
std::unique_ptr<DragHandler> switchDrag(HeadList& list, TrackSwitch which, CSongTrack* first);
/// Changes the height of a row, and of all selected tracks when it is one of theirs.
std::unique_ptr<DragHandler> sizeDrag(HeadList& list, const RowHead& head);
/// Moves the tracks that are selected with this one. `click` is for a release without a drag: on
/// the stripe the colour is asked for, else the track is selected alone.
std::unique_ptr<DragHandler> moveDrag(HeadList& list, CSongTrack* track, bool onStripe);
