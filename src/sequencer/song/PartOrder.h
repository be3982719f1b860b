#pragma once

class CList;
class CPart;

using PartBefore = bool (*)(CPart* a, CPart* b, void* context);

bool inOrder(const CList& parts, PartBefore before, void* context);
/// Orders a list of parts in place, keeping the order of those of which neither is `before` the
/// other. Moves items and allocates nothing; a list in order is left untouched. Graph holder.
void sortParts(CList& parts, PartBefore before, void* context);
/// By position alone.
void sortByPos(CList& parts);
bool earlier(CPart* a, CPart* b, void*); ///< the order of `sortByPos`
