#pragma once

#include "project/GraphIndex.h"

class CMapProg;
class CStream;
class ItemView;

/// "cm" and "cmap": the lists of controller maps of the host. A map without a target that a file
/// can name is left out.
void writeMaps(CStream* stream, CQV* host, const GraphIndex& index);

/// A new, empty list from a "cm" item, owned by the caller.
CMapProg* readMapProg(ItemView& item);
/// Adds the map of a "cmap" item to a list, unless its target is missing or a value is none.
void readMap(ItemView& item, CMapProg* prog, GraphIndex& index);
