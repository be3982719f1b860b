#pragma once

#include <vector>

class CQV;
class CSample;
class ForgetSet;

/// A hook (engine/ForgetHooks.h): events of the song, the clipboard and the history that point to
/// a sample of the set lose it, and are silent from then on. Voices are another's business.
void forgetSamples(CQV* host, const ForgetSet& gone);

/// Samples of the pool that no event of any program plays, nor one in the clipboard, and that no
/// take is written to. Interface thread.
std::vector<CSample*> unusedSamples(CQV* host);
/// "Remove unused": takes them out of the project in one step, and leaves their files. How many.
int removeUnusedSamples(CQV* host);
