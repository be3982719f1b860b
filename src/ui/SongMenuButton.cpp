#include "ui/SongMenuButton.h"

#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

SongMenuButton::SongMenuButton(CWin* owner, Workspace& space, const CStr& name, const CStr& use,
                               const CRect& place)
    : CButton(owner, name, "", place.left, place.top, place.width(), place.height()),
      workspace(space) {
    hint = use;
    skin = &clTrackControls;
    litSkin = &clTrackControlsPushed;
    onChange = new _COnChange<SongMenuButton>(this, &SongMenuButton::clicked);
}

CSeq* SongMenuButton::song() const {
    return playableSongOf(workspace.host());
}

void SongMenuButton::clicked(CObject*) {
    CSeq* seq = song();
    if (!seq) return;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    fill(popup, seq);
    popup->popupBelow(this);
}

void SongMenuButton::tell(const CStr& now, const CStr& spoken) {
    if (now == text) return;
    text = now;
    spokenName = spoken;
    redraw();
}
