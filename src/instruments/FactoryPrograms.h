#pragma once

class CQV;
class CSampler;
class CSynthProg;

constexpr int factoryCount = 32;

/// Name of a factory program, 0 to 31.
const char* factoryName(int index);

/// A new factory program, owned by the caller.
CSynthProg* buildFactoryProg(CQV* host, CSampler* sampler, int index);
