#include "ui/EditorTable.h"

#include "engine/CComp.h"
#include "ui/CCompEditor.h"

bool EditorTable::has(const CComp& comp) const {
    return makers.count(comp.type) > 0;
}

std::unique_ptr<CCompEditor> EditorTable::make(Workspace& workspace, CComp& comp) const {
    const auto found = makers.find(comp.type);
    return found == makers.end() ? nullptr : found->second(workspace, comp);
}
