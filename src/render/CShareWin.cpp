#include "render/CShareWin.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CTextWin.h"
#include "sequencer/render/CRender.h"
#include "sequencer/render/CSoundCloudAddOn.h"
#include "ui/CProgressWin.h"

namespace {

constexpr const char* shareTitle = "Share";
constexpr int contentWidth = 420, contentHeight = 148, labelWidth = 104;
constexpr int fieldLeft = CDialogWin::margin + labelWidth;
constexpr int fieldWidth = contentWidth - fieldLeft - CDialogWin::margin;

} // namespace

CShareWin::CShareWin(Workspace& space, CWin* owner, CRender& choices)
    : CDialogWin(owner, shareTitle, contentWidth, contentHeight,
                 winCaption | winCentre | winEscape),
      workspace(space), render(choices), addOn(choices.addOn) {
    constexpr int buttonLeft = contentWidth - margin - buttonWidth;
    accountButton = new CButton(this, "account", "", buttonLeft, margin, buttonWidth, fieldHeight);
    accountButton->tabStop = true;
    wire(accountButton->onChange, new _COnChange<CShareWin>(this, &CShareWin::accountClicked));
    addControl(accountButton);
    account = new CLabel(this, "", fieldLeft, 0, buttonLeft - gap - fieldLeft, fieldHeight);
    addRow("Account", account);
    name = new CEdit(this, "name", fieldLeft, 0, fieldWidth, fieldHeight);
    name->selectOnFocus = true;
    name->setText(render.songName.empty() ? extractFileName(render.filename) : render.songName);
    wire(name->onKeyDown, new _COnKey<CShareWin>(this, &CShareWin::nameKey));
    addRow("Track name", name);
    sharing = new CDropdown(this, "sharing", fieldLeft, 0, fieldWidth, fieldHeight);
    sharing->add("Public");
    sharing->add("Private");
    sharing->setIndex(sameText(addOn->param("sharing"), "private") ? 1 : 0);
    sharing->tabStop = true;
    addRow("Can be heard", sharing);
    addButton("Upload");
    addButton("< Back", new _COnChange<CShareWin>(this, &CShareWin::backClicked));
    startCtrl = name;
    showAccount();
}

void CShareWin::addRow(const char* label, CCtrl* field) {
    auto* title = new CLabel(this, label, margin, nextTop, labelWidth, fieldHeight);
    title->field = field == account ? accountButton : field;
    addControl(title);
    field->top = nextTop;
    addControl(field);
    nextTop += fieldHeight + gap;
}

void CShareWin::showAccount() {
    const CStr owner = addOn->param("account");
    account->setText(owner.empty() ? CStr("Not connected") : owner);
    accountButton->setText(owner.empty() ? "Connect" : "Disconnect");
}

void CShareWin::accountClicked(CObject*) {
    if (addOn->param("account").empty())
        connect();
    else
        addOn->disconnect();
    showAccount();
}

void CShareWin::connect() {
    bool cancelled = false;
    auto state = CSoundCloudAddOn::Connection::refused;
    {
        CProgressWin progress(workspace, "Connecting");
        progress.onStatus("Authorizing...");
        addOn->goOn = [&](float done) {
            cancelled = cancelled || !progress.onRender(done);
            return !cancelled;
        };
        state = addOn->connectBy([&] { return askServiceCode(&progress, addOn); });
        addOn->goOn = nullptr;
    }
    if (state != CSoundCloudAddOn::Connection::refused || cancelled) return;
    const CStr why = addOn->param("error");
    showMsg(this, shareTitle, why.empty() ? CStr("The service refuses to connect") : why);
}

bool CShareWin::nameKey(CObject*, int& key, int mods) {
    if (key != keyReturn || mods) return false;
    accept();
    return true;
}

void CShareWin::accept() {
    render.songName = name->text;
    addOn->setParam("sharing", sharing->index == 1 ? "private" : "public");
    CDialogWin::accept();
}

void CShareWin::backClicked(CObject*) {
    hide();
}

CStr askServiceCode(CWin* owner, CSoundCloudAddOn* addOn) {
    const CStr page = addOn->param("page");
    CTextWin ask(owner, "Connect", "",
                 page.empty() ? CStr("Code of the service") : "Code that you get at " + page);
    ask.showModal();
    return ask.result ? ask.text : CStr();
}
