#pragma once

#include "engine/ParamRef.h"
#include "engine/StoredValue.h"

class CMap;
class CMapProg;
class CQV;
class CStr;

// Controllers of MIDI that lead to parameters, by the list of maps that is in force. Interface
// thread.

/// What leads to a parameter.
struct LeadingController {
    static constexpr int none = -1, awaited = -2; ///< the next that moves will be it
    int number = none;                            ///< 0 to 127, or one of these
};
LeadingController controllerOf(CQV* host, const ParamRef& to);
/// The next controller that moves leads to it from then on: in place of the one that does, or by a
/// step "Add".
void learnController(CQV* host, const ParamRef& to);
void forgetController(CQV* host, const ParamRef& to); ///< "Forget controller", a step

/// Which controller starts, stops, rewinds, records (0 to 3) or sets the tempo (4): its number, or
/// as LeadingController has it.
StoredValue transportController(CQV* host, int index);

// The lists of maps themselves, each change a step.

/// What a row of a list has that the user sets.
enum class MapField { controller, min, max, mode };
StoredValue mapValue(CMap* map, MapField field);
void addEmptyMap(CQV* host); ///< to the list in force
void deleteMap(CQV* host, CMap* map);
void addMapProg(CQV* host); ///< an empty list, which is in force from then on
/// The list in force, or of the only one what is in it: an empty one takes its place.
void deleteMapProg(CQV* host);
void renameMapProg(CQV* host, CMapProg* prog, const CStr& name);
/// Puts another list in force; an index beyond the lists means the nearest.
void chooseMapProg(CQV* host, int index);
