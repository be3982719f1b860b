#pragma once

#include "base/Atomic.h"
#include "base/CStr.h"
#include "base/Geometry.h"
#include "engine/StoredValue.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

class CComp;
class CIO;
class CObject;
class CQV;

// What the user changes of the graph, each one step of the history. Interface thread; the step has
// been carried out on return. Places are of the canvas, at 100 %, and are kept within it.

constexpr unsigned compSelected = 1; ///< bit of a component's flags

/// Those that the canvas shows, in their order.
std::vector<CComp*> selectedComps(CQV* host);
void selectOnly(CQV* host, CComp* comp); ///< null for nothing

/// Moves the selected components; each that would leave the canvas stops at its edge.
void moveComps(CQV* host, CPoint by);
/// Gives components other places, in a step of that name.
void placeComps(CQV* host, std::span<CComp* const> comps, std::span<const CPoint> places,
                const CStr& title);
/// Joins two ports, of which one is an output and the other an input of the same kind, whichever
/// comes first; ports that are joined come apart.
void toggleCable(CIO* a, CIO* b);
bool areJoined(CIO* a, CIO* b);
void deleteCable(CQV* host, CObject* cable);

/// A new component of a type (CompType), selected alone; instruments come cabled to the first MIDI
/// input and the first audio output. With a cable it comes into that instead, if it can.
CComp* addComp(CQV* host, int type, CPoint at, CObject* into = nullptr);
/// The same with a component that is complete and linked nowhere.
CComp* addComp(CQV* host, std::unique_ptr<CComp> made, CPoint at, CObject* into = nullptr);
/// The type of component that opens a preset, by the ending of the file's name; 0 for none.
int presetType(const CStr& path);
/// Adds a component for each preset, named after its file, one beside the other. What cannot be
/// read is left out, after a message.
void addPresets(CQV* host, const std::vector<CStr>& paths, CPoint at);

bool mayDuplicate(const CComp* comp); ///< not devices and songs
/// Duplicates those that can be, so far from where they are; the copies come to be selected. Cables
/// between two of them join the copies, those to and from others are repeated.
void duplicateComps(CQV* host, const std::vector<CComp*>& comps, CPoint by);

/// Whether a component could come into a cable: it has an input and an output of its kind, and it
/// is not at one of its ends.
bool fitsInto(const CComp* comp, const CObject* cable);
/// Puts it there, and at a place.
void insertComp(CQV* host, CComp* comp, CObject* cable, CPoint at);
bool canPullOut(CQV* host, CComp* comp); ///< it has cables both in and out of a kind
/// Takes it out of its cables; what fed it feeds what it fed. Moves it as well.
void pullOutComp(CQV* host, CComp* comp, CPoint by);

/// Gives all components tidy places.
void tidyComps(CQV* host);
/// The same at once and without a step, for a project that is being made.
void tidyNewGraph(CQV* host);

/// The mute of a cable, an output, or the single output of a component; none for what has none.
std::optional<StoredValue> muteOfItem(CObject* item);
void toggleMute(CQV* host, CObject* item);

/// The device that a MIDI component stands for, -1 all.
void chooseDevice(CComp* comp, Shared<int>& device, int index);
