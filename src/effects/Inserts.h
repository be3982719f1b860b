#pragma once

#include <memory>

class CComp;
class CEffect;
class CFX;
class COutputChannel;
class CQV;
class CStr;

// The effects that a mixer strip runs through, in their order; each edit is one step of the
// history. Interface thread; the step has been carried out on return. An index beyond the end, or
// below 0, means the end.

/// A new rack with one effect (FxKind), complete and linked nowhere, to be an insert of a channel.
std::unique_ptr<CEffect> makeInsert(COutputChannel* ch, int kind);
/// The effect of such a rack.
CFX* effectOf(CEffect* rack);

/// A rack with one effect (FxKind) comes to a place, with a share of it that leaves the sound
/// itself to be heard. The rack.
CComp* addInsert(COutputChannel* ch, int kind, int index);
/// A component that is complete and linked nowhere comes to a place, or in place of what is there.
CComp* addInsert(COutputChannel* ch, std::unique_ptr<CComp> made, int index);
CComp* replaceInsert(COutputChannel* ch, int index, std::unique_ptr<CComp> made);
/// A rack that a file (.qve) tells. Null, and nothing happens, where it has none.
CComp* addInsertFile(COutputChannel* ch, const CStr& path, int index);
/// "Add Send": a new send bus, called after that rack, which it runs through. False, and nothing
/// happens, where the file has none.
bool addSendFile(CQV* host, const CStr& path);
/// Another effect in place of the one at `index`, or of nothing.
CComp* replaceInsert(COutputChannel* ch, int index, int kind);
void removeInsert(COutputChannel* ch, CComp* insert);
/// To a place, counted before the move, of the same or another strip. False where it stays.
bool moveInsert(COutputChannel* from, CComp* insert, COutputChannel* to, int index);
/// By how many dB the compressors that are on in an insert lower the sound now; 0 without any.
float gainReductionDb(CComp* insert);
/// A duplicate comes there instead. Null for what cannot be duplicated, after a message.
CComp* copyInsert(CComp* insert, COutputChannel* to, int index);
