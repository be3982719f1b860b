#pragma once

#include "base/CStr.h"

class CObject;

/// How the number of a setting is told, and what a number means that is typed for it. `object` has
/// the setting. Any thread.
struct SettingUnit {
    CStr (*text)(const CObject* object, double number);
    double (*typed)(const CObject* object, double entered); ///< may lie beyond the range
};

extern const SettingUnit plainUnit;      ///< "3", "0.25"
extern const SettingUnit onOffUnit;      ///< "On", "Off"
extern const SettingUnit shareUnit;      ///< 0.46 is "46 %", and so it is typed
extern const SettingUnit gainUnit;       ///< an amplitude as "-6.0 dB"
extern const SettingUnit squaredUnit;    ///< the square root of one, told alike
extern const SettingUnit decibelUnit;    ///< "-20.0 dB"
extern const SettingUnit hertzUnit;      ///< "440 Hz", "1.20 kHz"
extern const SettingUnit msUnit;         ///< "12 ms", "1.50 s"
extern const SettingUnit degreeUnit;     ///< "90 deg"
extern const SettingUnit semitoneUnit;   ///< "+12 st"
extern const SettingUnit centUnit;       ///< of a semitone: 0.07 is "+7 ct"
extern const SettingUnit panUnit;        ///< "L32", "C", "R100"
extern const SettingUnit ratioUnit;      ///< 0.25 is "4.0 : 1", typed as 4
extern const SettingUnit keyUnit;        ///< 60 is "C4"
extern const SettingUnit channelUnit;    ///< -1 is "All", 0 is "1", typed as shown
extern const SettingUnit controllerUnit; ///< of MIDI: -1 is "None"
