#pragma once

class CComp;
class CQV;

/// Values of `CObject::type` of a component (category 1).
enum CompType : int {
    compPlain = 0, ///< also CMixer and CKeyboard, which are made by class
    compQV = 1,
    compVST = 2,
    compSampler = 3,
    compSeq = 4,
    compTrack = 5,
    compMIDIChs = 6,
    compEffect = 7,
    compGroupCh = 9,
    compMIDIIn = 10,
    compMIDIOut = 11,
    compAudioIn = 12,
    compAudioOut = 13,
    compEditor = 14,
    compArp = 15,
};

using CompMaker = CComp* (*)(CQV*);

/// Enters how a type is made. Start-up only.
void enterCompType(int type, CompMaker maker);

/// A new component of that type, without channels and ports (see `CComp::init`), owned by the
/// caller; a plain `CComp` with type 0 when the type is unknown. `category` is not looked at.
CComp* createComp(CQV* root, unsigned char category, unsigned char type);
