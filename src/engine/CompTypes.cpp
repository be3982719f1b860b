#include "engine/CompTypes.h"

#include "engine/CGroupCh.h"
#include "engine/DeviceComps.h"

namespace {

template <class T>
CComp* make(CQV* root) {
    return new T(root);
}

constexpr int numTypes = 256;

/// What every type is made by. The types of the engine stand here; a folder above enters its own.
struct Makers {
    CompMaker of[numTypes] = {};

    Makers() {
        of[compGroupCh] = make<CGroupCh>;
        of[compMIDIIn] = make<CMIDIIn>;
        of[compMIDIOut] = make<CMIDIOut>;
        of[compAudioIn] = make<CAudioIn>;
        of[compAudioOut] = make<CAudioOut>;
    }
};

Makers& makers() {
    static Makers all;
    return all;
}

} // namespace

void enterCompType(int type, CompMaker maker) {
    if (type >= 0 && type < numTypes) makers().of[type] = maker;
}

CComp* createComp(CQV* root, unsigned char, unsigned char type) {
    const CompMaker maker = makers().of[type];
    return maker ? maker(root) : new CComp(root);
}
