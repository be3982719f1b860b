#include "instruments/ArpSettings.h"

#include "instruments/CArp.h"
#include "instruments/CArpProg.h"

#include <array>

namespace {

using Numbers = StoredValue::Numbers;

CArpProg* program(CObject* arp, int index) {
    return static_cast<CArp*>(arp)->programs().items(index);
}
const CArpProg* program(const CObject* arp, int index) {
    return static_cast<const CArp*>(arp)->programs().items(index);
}

template <auto field, SettingBound least, SettingBound most>
constexpr Setting progSetting(const char* group, const char* name, double usual,
                              const SettingUnit& unit = plainUnit,
                              Setting::Form form = Setting::number) {
    using Type = typename MemberOf<decltype(field)>::Type;
    return {group,
            {name,
             [](const CObject* o, int i) {
                 const CArpProg* prog = program(o, i);
                 return Numbers{prog ? double((prog->*field).load()) : 0.0};
             },
             [](CObject* o, int i, const Numbers& to) {
                 CArpProg* prog = program(o, i);
                 if (!prog || !std::isfinite(to[0])) return;
                 prog->*field = settingNumber<Type>(std::clamp(to[0], least.value, most.value));
             }},
            least.value,
            most.value,
            usual,
            &unit,
            form};
}

constexpr const char* modes[arpModes] = {"As played",   "Up",          "Down",
                                         "Up, down",    "Up and down", "Down, up",
                                         "Down and up", "Chord",       "Random"};
/// The keys that are held make another pattern.
constexpr StoredValue::Kind mode = {"Mode",
                                    [](const CObject* o, int i) {
                                        const CArpProg* prog = program(o, i);
                                        return Numbers{prog ? double(prog->mode) : 0.0};
                                    },
                                    [](CObject* o, int i, const Numbers& to) {
                                        auto* arp = static_cast<CArp*>(o);
                                        CArpProg* prog = program(o, i);
                                        if (prog && prog == arp->getProg())
                                            arp->setMode(asRound(to[0]));
                                        else if (prog)
                                            prog->setMode(asRound(to[0]));
                                    }};

/// Ticks, as parts of a whole bar of four quarters where they are such.
const SettingUnit stepUnit{[](const CObject*, double ticks) {
                               constexpr double whole = 3840.0;
                               const double parts = whole / ticks;
                               if (parts == std::floor(parts)) return "1/" + asStr(asRound(parts));
                               return asStrFormat(ticks, "%.0f ticks");
                           },
                           [](const CObject*, double entered) { return entered; }};

constexpr std::array progTable = {
    Setting{"Pattern", mode, 0.0, arpModes - 1.0, 0.0, &plainUnit, Setting::choice, modes},
    progSetting<&CArpProg::octaves, 1.0, 5.0>("Pattern", "Octaves", 1.0, plainUnit, Setting::whole),
    progSetting<&CArpProg::stepTicks, 1.0, 3840.0>("Time", "Step", 240.0, stepUnit, Setting::ratio),
    progSetting<&CArpProg::triplets, 0.0, 1.0>("Time", "Triplets", 0.0, onOffUnit, Setting::onOff),
    progSetting<&CArpProg::swing, 0.0, 1.0>("Time", "Swing", 0.0, shareUnit),
    progSetting<&CArpProg::gate, double(CArpProg::minShare), 1.0>("Notes", "Gate", 1.0, shareUnit),
    progSetting<&CArpProg::prob, double(CArpProg::minShare), 1.0>("Chance", "Steps", 1.0,
                                                                  shareUnit),
    progSetting<&CArpProg::rndGate, 0.0, 1.0>("Chance", "Length", 0.0, shareUnit),
    progSetting<&CArpProg::rndVelocity, 0.0, 1.0>("Chance", "Velocity", 0.0, shareUnit),
};

/// The keys that only the latch keeps end with it.
constexpr StoredValue::Kind latch = {
    "Latch",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CArp*>(o)->latch)}; },
    [](CObject* o, int, const Numbers& to) { static_cast<CArp*>(o)->setLatch(asRound(to[0])); }};
constexpr StoredValue::Kind power = {
    "Power",
    [](const CObject* o, int) { return Numbers{static_cast<const CArp*>(o)->enabled ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) { static_cast<CArp*>(o)->enable(to[0] != 0.0); }};

constexpr std::array arpTable = {
    Setting{"Arpeggiator", power, 0.0, 1.0, 1.0, &onOffUnit, Setting::onOff},
    Setting{"Arpeggiator", latch, 0.0, 1.0, 0.0, &onOffUnit, Setting::onOff},
    fieldSetting<&CArp::ccGate, -1.0, 127.0>("Controllers", "Gate by", -1.0, controllerUnit,
                                             Setting::whole),
    fieldSetting<&CArp::ccSwing, -1.0, 127.0>("Controllers", "Swing by", -1.0, controllerUnit,
                                              Setting::whole),
};

} // namespace

Settings arpProgSettings() {
    return progTable;
}

Settings arpSettings() {
    return arpTable;
}
