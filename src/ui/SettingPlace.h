#pragma once

#include "engine/ParamRef.h"
#include "engine/Setting.h"
#include "instruments/SoundModulation.h"

#include <functional>
#include <vector>

class CComp;

/// A setting of one object, as a control shows it. Interface thread.
struct SettingPlace {
    const Setting* setting = nullptr; ///< not owned
    CObject* object = nullptr;        ///< has it; not owned
    int index = 0;                    ///< of the value
    CStr title;                       ///< under which it stands, such as "LFO 1"
    /// Other objects of the class that are set along with it; empty: none.
    std::function<std::vector<CObject*>()> others;
    std::function<bool()> alive; ///< the object is still there; empty: it always is
    /// The parameter that moves it; with `assign` one is made where there can be one.
    std::function<ParamRef(bool assign)> param = {};
    CComp* paramComp = nullptr; ///< has it, or may get one; null: there can be none
    std::function<ModulatedValue()> modulation =
        {}; ///< how far it is moved by others; empty: not at all

    bool there() const { return !alive || alive(); }

    StoredValue value() const { return setting->of(object, index); }
    double number() const { return value().get()[0]; }
    CStr text() const { return setting->text(object, number()); }
    CStr spoken() const { return CStr(setting->name()) + ", " + title; }
    /// Of the others.
    std::vector<StoredValue> along() const {
        std::vector<StoredValue> all;
        if (others)
            for (CObject* o : others()) all.push_back(setting->of(o, index));
        return all;
    }
};
