#pragma once

#include "gui/CGroup.h"
#include "surfaces/SurfacePlace.h"

#include <functional>
#include <optional>
#include <vector>

class CCS;
class CLabel;

/// What can be set of a thing in the definition of a controller, one field below the other.
/// Interface thread.
class SurfaceFields : public CGroup {
public:
    struct Ways {
        std::function<void()> changed;             ///< called at each change
        std::function<void(const CStr& text)> say; ///< tells the user
    };
    SurfaceFields(CWin* win, CCS& surface, Ways ways);

    void show(const SurfacePlace& what); ///< the fields that it has, with what they are now
    void refresh() { show(place); }
    void resized() override;
    void describe(Description& d, int part) const override;

private:
    /// A field shows and stores one thing; `fill` is false for what the chosen one has not.
    struct Row {
        CCtrl* ctrl;
        CLabel* label;
        std::function<bool()> fill;
        std::function<void()> store;
        bool deed = false; ///< it does something, and changes nothing of the definition
    };
    struct Words {
        const char *key, *label, *hint;
    };
    struct Choice {
        int value;
        const char* text;
    };
    using Number = std::function<int*()>;

    void addNames();
    void addControlFields();
    void addMapFields();
    void addPanelFields();
    void addPresetFields();
    void addDeviceFields();

    template <class T>
    T* addRow(T* made, const Words& words, std::function<bool()> fill, std::function<void()> store);
    void addText(const Words& words, std::function<std::optional<CStr>()> get,
                 std::function<void(const CStr&)> set);
    void addNumber(const Words& words, int least, int most, Number of);
    void addChoice(const Words& words, const std::vector<Choice>& choices, Number of);
    void addColour(const Words& words, Number of);
    void addPicture(const Words& words, std::function<SurfaceImage*()> of);
    void addDeed(const Words& words, std::function<bool()> has, std::function<void()> deed);
    void choosePicture(const std::function<SurfaceImage*()>& of);
    void stored(CObject* sender);
    void learnClicked();

    CHWCtrl* ctrl() const;
    CControlMap* map() const;
    bool onDevice() const { return place.kind == SurfacePlace::ofDevice; }
    bool asks() const;
    bool turnsParameter() const;

    CCS& surface;
    const Ways ways;
    SurfacePlace place;
    std::vector<Row> rows;
    CStr folder; ///< of the last dialog
};
