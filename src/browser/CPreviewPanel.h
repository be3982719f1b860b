#pragma once

#include "gui/CGroup.h"

class CBrowserPreview;
class CButton;
class CLabel;
class CValue;
class PreviewWave;

/// What is listened to: its name and format, its wave, and how loud it plays. Interface thread.
class CPreviewPanel : public CGroup {
public:
    static constexpr int leastHeight = 96;

    PreviewWave* const wave;

    CPreviewPanel(CWin* win, CBrowserPreview* preview);
    ~CPreviewPanel() override;
    CPreviewPanel(const CPreviewPanel&) = delete;
    CPreviewPanel& operator=(const CPreviewPanel&) = delete;

    void resized() override;
    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void idle();      ///< interface tick
    void fileShown(); ///< another file, or it plays or not

private:
    CButton* addButton(const char* key, const char* text, const char* hintText,
                       void (CPreviewPanel::*clicked)(CObject*));
    void playClicked(CObject* sender);
    void loopClicked(CObject* sender);
    void tempoClicked(CObject* sender);
    void keyClicked(CObject* sender);
    void playAnew();
    void matchClicked(CObject* sender);
    void volumeChanged(CObject* sender);

    CBrowserPreview* preview; ///< the host's
    CLabel *name, *format, *volumeName;
    CButton *play, *loop, *tempo, *tuned, *match;
    CValue* volume;
    int keptVolume = 0; ///< in the settings
};
