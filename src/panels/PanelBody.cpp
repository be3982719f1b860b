#include "panels/PanelBody.h"

namespace {

constexpr int barRoom = 18; ///< of the scroll bar, which may be needed or not

} // namespace

void PanelBody::resized() {
    if (arrange) arrange(width - barRoom);
    CScrollPanel::resized();
}
