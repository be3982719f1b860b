#include "ui/EditorTable.h"

#include "engine/CComp.h"
#include "ui/CCompEditor.h"

const EditorTable::Maker* EditorTable::find(const CComp& comp) const {
    const auto own = single.find(&comp);
    if (own != single.end()) return &own->second;
    const auto ofType = makers.find(comp.type);
    if (ofType == makers.end()) return nullptr;
    const Entry& entry = ofType->second;
    return entry.fits && !entry.fits(comp) ? nullptr : &entry.make;
}

bool EditorTable::has(const CComp& comp) const {
    return find(comp) != nullptr;
}

std::unique_ptr<CCompEditor> EditorTable::make(Workspace& workspace, CComp& comp) const {
    const Maker* maker = find(comp);
    return maker ? (*maker)(workspace, comp) : nullptr;
}
