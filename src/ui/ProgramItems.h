#pragma once

#include "gui/ItemLook.h"

/// The items of the program's own views.
const ItemLook* programItems(int& count);

extern CGuiItem2 clLogo, clMainbar, clGrid, clGridBeats, clGridSnap, clGridFlats, clTransporter,
    clTransporterPushed, clTrack, clTrackControls, clTrackControlsPushed, clTrackSelected,
    clTrackArm, clTrackArmPushed, clTrackMute, clTrackMutePushed, clTrackSolo, clTrackSoloPushed,
    clPart, clPartSelected, clEvent, clEventSelected, clMeter, clLoop, clMarkers, clMarker,
    clMarkerSelected, clTempoTrack, clTempoPart, clFXs, clFXsHighlight, clFX, clFFT, clTrackLed,
    clComps, clCompsItems, clCompsItemsSelected, clCompsMidi, clCompsAudio, clMixVolKnob, clMixMute,
    clMixMutePushed, clMixSolo, clMixSoloPushed, clSamplerPanel, clSamplerWave, clSamplerFader,
    clSamplerFaderBkgnd, clEffectPanel, clDisplay, clDisplaySelected, clDrumpad, clDrumpadSelected,
    clSelection, clStepRec;
