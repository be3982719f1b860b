#pragma once

#include "project/GraphIndex.h"
#include "project/Project.h"

class CStream;

// How a project goes into a stream: the magic string "QVF", then named items. Interface thread.

/// Writes all of a project. Changes nothing but what components note down in their `saving`.
void writeProject(const Project& project, CStream* stream);

/// Writes a component with its ports, channels, strips and inserts, those of inserts included.
void writeComp(CStream* stream, int listKind, CComp* c);
/// The ports, channels and strips of it alone.
void writeOutputs(CStream* stream, int listKind, CComp* c);
