#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

#include "driver/libaam.h"

#include <vector>

class COnChange;

/// An audio device as the module lists it.
class CAudioDevice : public CObject {
public:
    explicit CAudioDevice(const CStr& deviceName) : name(deviceName) {}
    CStr name;
};

/// Bridge to the driver module, a shared library beside the program that reaches all audio and MIDI
/// hardware. Without the module every operation has a neutral result. Interface thread; `frames`
/// and `rate` change only while no callback runs.
class CAAM : public CObject {
public:
    static constexpr int maxFrames = aamMaxFrames;
    static constexpr float maxRate = 192000.0f;

    /// Loads the module at `path` and lists the devices. `blockCallback` is called once per block
    /// while a device is open. A module that cannot be loaded is told on standard output.
    explicit CAAM(AamCallback blockCallback, const CStr& path = defaultPath());
    /// Closes the device: no callback comes any more.
    ~CAAM() override;
    CAAM(const CAAM&) = delete;
    CAAM& operator=(const CAAM&) = delete;

    COnChange* onChange = nullptr;  ///< owned; called when a device was opened, before it starts
    ListOf<CAudioDevice> audioDevs; ///< owned
    int driverType = 0;
    bool loaded = false;
    bool opened = false;
    bool dawMode = false;     ///< no device is real, and channels have numbered names
    bool needReopen = false;  ///< the next `idle` closes and opens the device
    int frames = 1024;        ///< block size: requested, then granted
    bool framesChosen = true; ///< false: what the device has is taken, `frames` only if it has none
    float rate = 44100.0f;
    unsigned long windowHandle = 0; ///< of the main window
    int device = -1, deviceRec = -1;
    int numAudioIns = 0, numAudioOuts = 0; ///< of the open device
    int numMidiIns = 0, numMidiOuts = 0;
    int retryMs = 1000; ///< from one attempt to open a device that was lost to the next

    static CStr defaultPath(); ///< beside the program

    /// Does nothing while one is open. `opened` tells the result; a device that grants a block or
    /// rate out of range is closed again, and what was requested stays.
    void audioOpen(int index);
    /// The notes that sound on instruments outside are ended first.
    void audioClose();
    /// Opens the device anew where that is asked for. One that was lost, and no other opened since,
    /// is tried again until it comes back.
    void idle();
    /// Whether the driver wants to be closed and opened again.
    bool needReload();
    void edit(); ///< the module's own settings

    /// 1 to 16384, others are ignored. Chosen by the user, for the next open.
    void setFrames(int wanted);
    /// Above 0 up to 192000 Hz, others are ignored.
    void setRate(float wanted);
    void setDriverType(int newType); ///< closes the device and lists anew
    void getAudioDeviceNames();
    void getMIDIDeviceNames() {}
    CStr getDriverName(int) { return ""; }
    int mumDriverTypes() { return 1; }
    int getDevice(int, bool, CList*) { return 0; }

    int numAudioDevs() const { return audioDevs.getCount(); }
    int numAudioRecDevs() const { return 0; }
    int getMIDIInCount() const { return numMidiIns; }
    int getMIDIOutCount() const { return numMidiOuts; }
    CStr audioName(int i); ///< empty out of range
    CStr audioRecName(int) { return ""; }
    CStr midiInName(int i);
    CStr midiOutName(int i);
    void midiInEnable(int i, int on);
    void midiOutEnable(int i, int on);
    bool midiInEnabled(int i);
    bool midiOutEnabled(int i);
    CStr audioInName(int i);
    CStr audioOutName(int i);
    void audioInEnable(int i, int on);
    void audioOutEnable(int i, int on);
    bool audioInEnabled(int i);
    bool audioOutEnabled(int i);

    /// Sends a system exclusive message, 0xF0 to 0xF7, to a MIDI output, -1 all. False where it
    /// goes nowhere, or too much waits.
    bool sendExclusive(int device, const std::vector<unsigned char>& bytes);
    /// The oldest system exclusive message that came, and the MIDI input where it did; false
    /// without one.
    bool takeExclusive(int& device, std::vector<unsigned char>& bytes);

    /// Asks the desktop for real-time scheduling of a thread of this process, by its number in the
    /// system. May wait for the answer.
    void askRealtime(int thread, int priority);

private:
    void load(const CStr& path);
    intptr_t call(AamOp op, intptr_t a = 0, intptr_t b = 0);
    CStr nameFrom(AamOp op, int i);
    bool takeGranted();
    void openWith(int index, int wantedFrames);
    void endNotes();
    void reopenLost();
    int findLost();

    CStr lostName;   ///< of the device that is waited for, empty for none
    int triedAt = 0; ///< asTimeInMS of the latest attempt to open it
    AamCallback callback;
    AamEntry libaam = nullptr;
    void* handle = nullptr; ///< the loaded module
};

extern CAAM* aam;
