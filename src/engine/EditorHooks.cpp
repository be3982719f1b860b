#include "engine/EditorHooks.h"

namespace {

EditorHooks none;
EditorHooks* current = &none;

} // namespace

EditorHooks* editorHooks() {
    return current;
}

void setEditorHooks(EditorHooks* hooks) {
    current = hooks ? hooks : &none;
}
