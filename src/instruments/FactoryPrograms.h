#pragma once

class CQV;
class CSampler;
class CSynthProg;

constexpr int factoryCount = 32;

/// Name of a factory program, 0 to 31.
const char* factoryName(int index);

/// Its category, and what else it may be looked for by, words apart by spaces.
const char* factoryFamily(int index);
const char* factoryWords(int index);

/// A new factory program, owned by the caller.
CSynthProg* buildFactoryProg(CQV* host, CSampler* sampler, int index);
