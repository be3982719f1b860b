#include "panels/sampler/SampleBox.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/controls/CButton.h"
#include "panels/sampler/FrameField.h"
#include "panels/sampler/SampleView.h"
#include "ui/ProgramItems.h"
#include "ui/SettingName.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, zeroWidth = 112, zeroHeight = 24;

} // namespace

SampleBox::SampleBox(CWin* owner, Workspace& space, CSampleClip* clip, std::function<bool()> alive)
    : CGroup(owner, "sample", 0, 0, 1, SampleView::usualHeight + gap + FrameField::usualHeight),
      wave(new SampleView(owner, space.host()->values.get(), clip, alive)),
      zero(new CButton(owner, "zero", "Zero crossings", 0, 0, zeroWidth, zeroHeight)) {
    arrowsWalk = true;
    addControl(wave);
    for (int mark = 0; mark < sampleMarks; mark++) {
        ValueDoor* door = space.host()->values.get();
        addControl(fields.emplace_back(new FrameField(owner, door, clip, mark, alive)));
    }
    zero->hint = "Lines that are dragged go to where the wave is at zero";
    zero->skin = &clTrackControls;
    zero->litSkin = &clTrackControlsPushed;
    zero->tabStop = true;
    zero->onChange = new _COnChange<SampleBox>(this, &SampleBox::zeroClicked);
    zero->setLit(wave->zeroHelp);
    addControl(zero);
}

void SampleBox::resized() {
    wave->setBounds(0, 0, width, SampleView::usualHeight);
    int x = 0;
    const int y = SampleView::usualHeight + gap;
    for (FrameField* field : fields) {
        field->setBounds(x, y, field->width, field->height);
        x += field->width + gap;
    }
    zero->setBounds(x, y + settingNameHeight + 3, zeroWidth, zeroHeight);
}

void SampleBox::refresh() {
    wave->refresh();
    for (FrameField* field : fields) field->refresh();
}

void SampleBox::zeroClicked(CObject*) {
    wave->zeroHelp = !wave->zeroHelp;
    zero->setLit(wave->zeroHelp);
}
