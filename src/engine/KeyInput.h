#pragma once

#include "base/CList.h"
#include "engine/CIO.h"

#include <functional>
#include <vector>

class CAudioCable;
class CComp;
class COutputChannel;
class CQV;
class CStr;
class CUndo;

// Side chains: effects that follow the sound of another strip.

/// Where such a component hears it: by a cable that it owns, from a strip before its fader. A
/// member of the component. Lists as those of a component.
class CKeyInput {
public:
    ListOf<CAudioCable> cables; ///< owned; none, or one, into `channel`
    CInputChannel channel;      ///< what it brings in a block, silence if it brings nothing

    explicit CKeyInput(CComp* owner) : channel(owner) {}
    ~CKeyInput();
    CKeyInput(const CKeyInput&) = delete;
    CKeyInput& operator=(const CKeyInput&) = delete;

    COutputChannel* source() const; ///< null without one
};

/// A component that has one. Its effects follow the key as long as there is a cable.
class Keyed {
public:
    virtual CKeyInput& keyInput() = 0;
    virtual bool followsKey() const = 0; ///< it has an effect that would

protected:
    ~Keyed() = default;
};

/// Null for a component that has none, as for null.
CKeyInput* keyInputOf(CComp* comp);
/// The same by where it is heard; null for another input.
CKeyInput* keyOf(const CIO* input);
/// Whether the user may want to choose one. Strips of single drums take none.
bool offersKey(CComp* comp);

// Interface thread.

/// The cable from a strip into a component that is `Keyed`; owned by the caller.
CAudioCable* makeKeyCable(CComp* keyed, COutputChannel* from);
/// What a copy and the effects on its strips follow is what they follow of `source`, or the strip
/// that `twin` has in its place; null for none. Before the copy is in the graph.
void copyKeys(CComp* source, CComp* copy,
              const std::function<COutputChannel*(COutputChannel* strip)>& twin = {});
/// Takes another strip as key, or null for none, as a step of the history. False where nothing
/// changes.
bool setKey(CComp* keyed, COutputChannel* from);
/// The strips that can be heard there: all but the audio outs, and those that would wait for it.
std::vector<COutputChannel*> keySources(CComp* keyed);
/// Whether a strip is one of these.
bool mayKey(CComp* keyed, COutputChannel* strip);
/// Whether the strip waits for the component itself, by the cables there are. Such a key is silent.
bool keyWaitsForItself(CComp* keyed);
/// As the user knows it: the track or component that has the strip, and its number among several.
CStr stripName(const COutputChannel* strip);

/// `visit` gets all that have a key, in the graph and in its strips.
void eachKeyed(CQV* host, const std::function<void(CComp* keyed, CKeyInput& key)>& visit);
/// Records that no component is keyed by a strip that goes.
void removeKeys(CQV* host, CUndo* undo, const std::function<bool(COutputChannel* strip)>& goes);
