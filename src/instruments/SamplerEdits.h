#pragma once

#include "base/CStr.h"

class CLayer;
class CSampler;
class CSound;

// What a user does to the programs of a sampler and what they are made of. Each is one step of the
// history, carried out on return; what comes is current then. Interface thread.

void addDefaultProgram(CSampler* sampler);            ///< one synthesizer sound
void addFactoryProgram(CSampler* sampler, int index); ///< of `factoryName`
/// A factory program comes in the place of the current one.
void takeFactoryProgram(CSampler* sampler, int index);
/// The first program of a .qvs comes in its place; false for a file without any.
bool takeProgramFile(CSampler* sampler, const CStr& path);
/// The programs of a .qvs, or the presets of a SoundFont. False after a message, or without any.
bool openPrograms(CSampler* sampler, const CStr& path);

/// A knob of the current program stands for another controller, -1 none; what is told now calls it.
void setProgramMacro(CSampler* sampler, int macro, int controller, const CStr& name = CStr());

CLayer* addLayer(CSampler* sampler);                ///< to the current program; null without one
void removeLayer(CSampler* sampler, CLayer* layer); ///< unless it is the last
CSound* addSynthSound(CSampler* sampler, CLayer* layer);
/// A sound that plays a file; null for one that cannot be read.
CSound* addSampleSound(CSampler* sampler, CLayer* layer, const CStr& path);
/// Another file in place of that of a sample sound. False for one that cannot be read.
bool replaceSample(CSampler* sampler, CSound* sound, const CStr& path);
void removeSound(CSampler* sampler, CLayer* layer, CSound* sound);
