#pragma once

#include <memory>

class CMixerPanel;
class DragHandler;
enum class MixSwitch;
struct MixerStrip;

/// Brings a switch of all strips that are passed to the state that the first one comes to; those
/// that are selected with the first go with it. One step. A click switches these alone.
std::unique_ptr<DragHandler> swipeDrag(CMixerPanel& panel, MixSwitch which,
                                       const MixerStrip& first);
