#include "instruments/PatchText.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "instruments/COSCSound.h"

namespace {

/// Lines "so->", the path of an object, a field and its value.
class Lines {
public:
    CStr text;

    void put(const CStr& field, float value) { line(field, asStrFormat(value, "%gf")); }
    void put(const CStr& field, int value) { line(field, asStr(value)); }

private:
    void line(const CStr& field, const CStr& value) {
        text += CStr("so->") + field + " = " + value + ";\n";
    }
};

CStr indexed(const char* name, int i) {
    return CStr(name) + "[" + asStr(i) + "]";
}

void putSlots(Lines& out, const CStr& path, const CMod& mod) {
    for (int i = 0; i < modSlots; i++) {
        const CStr slot = path + "->params[" + asStr(i) + "].";
        out.put(slot + "index", int(mod.params[i].index));
        out.put(slot + "amount", float(mod.params[i].amount));
    }
}

void putEnvelope(Lines& out, const CStr& path, const CEnv& e) {
    struct Field {
        const char* name;
        float value;
    };
    for (const Field& f :
         {Field{"initial", e.initial}, Field{"attack", e.attack}, Field{"ac", e.ac},
          Field{"decay", e.decay}, Field{"dc", e.dc}, Field{"sustain", e.sustain},
          Field{"release", e.release}, Field{"rc", e.rc}})
        out.put(path + "->" + f.name, f.value);
    putSlots(out, path, e);
}

void putLfo(Lines& out, const CStr& path, const CLFO& l) {
    out.put(path + "->rate", float(l.rate));
    struct Field {
        const char* name;
        int value;
    };
    for (const Field& f :
         {Field{"wave", l.wave}, Field{"sync", l.sync}, Field{"mul", l.mul}, Field{"div", l.div},
          Field{"delay", l.delay}, Field{"restart", l.restart}})
        out.put(path + "->" + f.name, f.value);
    putSlots(out, path, l);
}

void putStrip(Lines& out, const CSound& s) {
    out.put("volume", float(s.volume));
    out.put("pan", float(s.pan));
    out.put("filter", int(s.filter));
    out.put("cutoff", float(s.cutoff));
    out.put("q", float(s.q));
    out.put("dist", int(s.dist));
    out.put("mode", int(s.mode));
    out.put("coarse", float(s.coarse));
    out.put("fine", float(s.fine));
    out.put("glide", int(s.glide));
    out.put("bendRange", int(s.bendRange));
    out.put("sends[0]", float(s.sends[0]));
    out.put("sends[1]", float(s.sends[1]));
}

void putOperators(Lines& out, const COSCSound& s) {
    struct Field {
        const char* name;
        float value;
    };
    for (const Field& f :
         {Field{"feed1", s.feed1}, Field{"detune", s.detune}, Field{"phase", s.phase},
          Field{"width", s.width}, Field{"phaseMod", s.phaseMod}, Field{"coarse2", s.coarse2},
          Field{"phase2", s.phase2}, Field{"feed2", s.feed2}, Field{"oscRing", s.oscRing},
          Field{"modRing", s.modRing}, Field{"oscInv", s.oscInv}})
        out.put(f.name, f.value);
    out.put("pmMul", int(s.pmMul));
}

} // namespace

CStr patchText(const CSound& s) {
    Lines out;
    putStrip(out, s);
    if (s.type == typeOscSound) putOperators(out, static_cast<const COSCSound&>(s));
    for (int i = 0; i < envelopeCount; i++)
        putEnvelope(out, indexed("envelope", i), *s.envelope[i]);
    for (int i = 0; i < lfoCount; i++) putLfo(out, indexed("lfo", i), *s.lfo[i]);
    putSlots(out, "vel", *s.vel);
    return out.text;
}

bool savePatchText(const CSound& sound) {
    CStr path = getHomeFolder();
    CFileStream file(addSep(path) + "patch.txt", 1);
    const CStr text = patchText(sound);
    return file.write(text.asChar(), text.length()) == text.length() && file.flush();
}
