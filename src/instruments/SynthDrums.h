#pragma once

class CSampler;
class CSynthProg;

/// A drum kit out of synthesizer sounds on the keys of General MIDI, 27 to 87. The program is owned
/// by the caller, who adds it to `sampler`. Interface thread.
CSynthProg* synthDrumKit(CSampler* sampler);
