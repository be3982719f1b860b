#pragma once

class CObject;
class CQV;

/// A hook (engine/ForgetHooks.h): events of the song, the clipboard and the history that point to
/// `object`, a sample, lose it, and are silent from then on. Voices are another's business.
void forgetSample(CQV* host, CObject* object);
