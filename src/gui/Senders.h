#pragma once

#include "gui/CCtrl.h"

/// The `tag` of the control that calls a handler, such as a button or an entry of a menu.
inline int tagOf(const CObject* sender) {
    return static_cast<const CCtrl*>(sender)->tag;
}
