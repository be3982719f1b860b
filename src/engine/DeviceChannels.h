#pragma once

class CQV;

/// Makes the audio components follow the enabled channels of the device: each direction has one for
/// every pair of channels, counted among the enabled ones, and one at least. Where a component
/// stands for a pair already it goes on, with its strip and cables. One whose channels are disabled
/// now stays as well and is silent, so that nothing is lost until they are enabled again.
///
/// Interface thread. A caller that also enables channels holds the graph around both, so that no
/// block finds one without the other.
void followChannels(CQV* host);
