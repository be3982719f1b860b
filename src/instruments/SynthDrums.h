#pragma once

class CSampler;
class CSynthProg;

/// A new program with the built-in kit on the keys 27 to 87 of General MIDI, owned by the caller:
/// the clips of `loadResource` where there are some, which come to the sampler, synthesis else.
CSynthProg* synthDrumKit(CSampler* sampler);
