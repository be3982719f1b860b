#pragma once

#include "data/generalmidi/GmPieces.h"

class CQV;
class CSampler;
class CStr;
class CSynthProg;

namespace gm {

/// All 128 programs in their order, eight to a family.
std::vector<Family> allFamilies();

/// The level that makes a program as loud as all others: a chord around C4 has -17 LUFS, a low C of
/// a bass -20. The host plays at 44100 Hz and is nobody else's; interface thread.
float evenLevel(CQV* host, const Family& family, const Program& program);

/// A program, owned by the caller, with that level.
CSynthProg* buildGmProgram(CQV* host, CSampler* sampler, const Family& family,
                           const Program& program, float level);

/// Writes each program as a file "Family/NNN Name.qvs" below `folder`, where NNN is its number from
/// 001 on. False if one could not be written.
bool writeSoundSet(CQV* host, const CStr& folder);

} // namespace gm
