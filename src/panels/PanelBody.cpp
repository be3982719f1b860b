#include "panels/PanelBody.h"

namespace {

/// Of the scroll bar, which may be needed or not, and of the margin that a scroll panel adds.
constexpr int barRoom = 24;

} // namespace

void PanelBody::resized() {
    if (arrange) arrange(width - barRoom);
    CScrollPanel::resized();
}
