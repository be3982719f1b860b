#include "engine/CPreviewBase.h"

#include "engine/CQV.h"

void CPreviewBase::join(CQV* host) {
    Shared<CPreviewBase*>* end = &host->preview;
    while (*end) end = &end->load()->next;
    end->storeRelease(this);
}
