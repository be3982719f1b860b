#pragma once

#include "engine/CComp.h"

#include <vector>

/// Stands for a component of a type that this program cannot make, such as a plug-in of another
/// format: it does nothing in the graph, and what a file told of it goes back into files as it was.
class CKeptComp : public CComp {
public:
    const int storedType; ///< as files number it; `type` is that of a plain component

    CKeptComp(CQV* root, int typeInFiles) : CComp(root), storedType(typeInFiles) {}

    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;

private:
    std::vector<unsigned char> content;
};
