#pragma once

class CQV;
class ForgetSet;

/// A hook (engine/ForgetHooks.h): events of the song, the clipboard and the history that point to
/// a sample of the set lose it, and are silent from then on. Voices are another's business.
void forgetSamples(CQV* host, const ForgetSet& gone);
