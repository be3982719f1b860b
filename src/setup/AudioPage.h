#pragma once

#include "setup/SetupPage.h"

class CAAM;
class CCheckbox;
class CDropdown;
class CValue;
class PortList;

/// The audio device, its block and rate, its channels, and what takes are recorded as.
class AudioPage : public SetupPage {
public:
    AudioPage(CSetupWin* window, CRect place);

private:
    void addRecDevices(int recDevices);
    static bool advanced(); ///< the page shows what hardly anybody needs
    void advancedClicked(CCheckbox* sender);
    CStr streamFacts() const;
    void addDevice();
    CDropdown* addDeviceList(const char* label, const char* name);
    void addStream();
    void addHelpers();
    CDropdown* addNumber(const char* label, const char* name, int value, const int* choices,
                         int count);
    void addRecording();
    void addTempFolder();
    void addChannels();
    void relist();
    CStr deviceState() const;
    void saveAudioOptions();
    void apply(PortList* list);
    void saveChannels();
    void driverChanged(CObject* sender);
    void deviceChanged(CObject* sender);
    void deviceRecChanged(CObject* sender);
    void disableAudioClicked(CObject* sender);
    void onHasChanged(CObject* sender);
    bool numberTyped(CObject* sender, int& key, int mods);
    void applyClicked(CObject* sender);
    void bitsChanged(CObject* sender);
    void latencyChanged(CObject* sender);
    void helpersChanged(CObject* sender);
    void tempAudioFolderClicked(CObject* sender);
    void audioInChecked(CObject* sender);
    void audioOutChecked(CObject* sender);
    void reopened();

    CAAM* bridge;                                                         ///< null without one
    CDropdown *driver = nullptr, *device = nullptr, *deviceRec = nullptr; ///< null: no choice
    CDropdown *frames = nullptr, *rate = nullptr, *bits = nullptr, *helpers = nullptr;
    CButton* applyButton = nullptr;
    CValue* latency = nullptr;
    CLabel* tempFolder = nullptr;
    PortList *ins = nullptr, *outs = nullptr; ///< null while no device is open
};
