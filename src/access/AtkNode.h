#pragma once

#include "gui/access/AccessTree.h"

#include <atk/atk.h>

/// A thing of the tree as an object of the library: it asks the tree whenever it is asked. What it
/// can do is told by its class, of which there is one for each set of faces.
class AtkNode {
public:
    /// Bits of a class: the faces that its objects have besides that of a place on the screen.
    enum Face : unsigned { action = 1, value = 2, text = 4, window = 8 };

    static unsigned facesOf(const Description& description);
    /// A new reference. `tree` is dropped by `forget`.
    static AtkObject* make(AccessTree* tree, AccessId id, unsigned faces);
    static void forget(AtkObject* object); ///< what it stood for is gone
};

/// The object of a thing, made when it is asked for first; not a new reference. Null if it is gone.
/// Told by the outlet that is open.
AtkObject* atkObjectOf(AccessId id);
