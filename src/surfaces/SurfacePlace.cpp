#include "surfaces/SurfacePlace.h"

#include "base/Numbers.h"

namespace {

template <class T>
T* at(std::vector<T>& list, int i) {
    return i >= 0 && i < int(list.size()) ? &list[size_t(i)] : nullptr;
}

template <class T>
void erase(std::vector<T>& list, int i) {
    if (at(list, i)) list.erase(list.begin() + i);
}

/// Answers where it stands; -1 where there is no room.
template <class T>
int append(std::vector<T>& list, T made) {
    if (int(list.size()) >= SurfaceDef::mostParts) return -1;
    list.push_back(std::move(made));
    return int(list.size()) - 1;
}

CStr counted(const char* text, size_t before) {
    return CStr(text) + " " + asStr(int(before) + 1);
}

} // namespace

CHWCtrlGroup* SurfacePlace::group(SurfaceDef& def) const {
    return kind == ofGroup || kind == ofCtrl ? at(def.groups, a) : nullptr;
}

CHWCtrl* SurfacePlace::ctrl(SurfaceDef& def) const {
    CHWCtrlGroup* in = kind == ofCtrl ? group(def) : nullptr;
    return in ? at(in->ctrls, b) : nullptr;
}

CControlPages* SurfacePlace::section(SurfaceDef& def) const {
    return kind >= ofSection ? at(def.sections, a) : nullptr;
}

CControlSectionPage* SurfacePlace::page(SurfaceDef& def) const {
    CControlPages* in = kind >= ofPage ? section(def) : nullptr;
    return in ? at(in->pages, b) : nullptr;
}

CControlMap* SurfacePlace::map(SurfaceDef& def) const {
    CControlSectionPage* in = kind == ofMap ? page(def) : nullptr;
    return in ? at(in->maps, c) : nullptr;
}

CStr* SurfacePlace::name(SurfaceDef& def) const {
    if (CHWCtrl* c_ = ctrl(def)) return &c_->name;
    if (CHWCtrlGroup* g = group(def)) return &g->name;
    if (CControlMap* m = map(def)) return &m->label;
    if (CControlSectionPage* p = page(def)) return &p->name;
    CControlPages* s = section(def);
    return s ? &s->name : nullptr;
}

SurfacePlace addToSurface(SurfaceDef& def, const SurfacePlace& to) {
    using P = SurfacePlace;
    SurfacePlace made = to;
    int where = -1;
    switch (to.kind) {
    case P::ofGroups:
        where = append(def.groups, {counted("Group", def.groups.size()), {}});
        made = {P::ofGroup, where};
        break;
    case P::ofGroup:
    case P::ofCtrl: {
        CHWCtrlGroup* group = to.group(def);
        if (!group || group->numCtrls() >= SurfaceDef::mostCtrls) return to;
        group->addCtrl("cc", 0);
        where = group->numCtrls() - 1;
        made = {P::ofCtrl, to.a, where};
        break;
    }
    case P::ofSections: {
        CControlPages section;
        section.name = counted("Section", def.sections.size());
        where = append(def.sections, std::move(section));
        made = {P::ofSection, where};
        break;
    }
    case P::ofSection: {
        CControlPages* in = to.section(def);
        if (in) where = append(in->pages, {counted("Page", in->pages.size()), {}});
        made = {P::ofPage, to.a, where};
        break;
    }
    case P::ofPage:
    case P::ofMap: {
        CControlSectionPage* in = to.page(def);
        CControlMap map;
        map.group = def.groups.empty() ? -1 : 0;
        if (in) where = append(in->maps, std::move(map));
        made = {P::ofMap, to.a, to.b, where};
        break;
    }
    default:
        break;
    }
    return where < 0 ? to : made;
}

void deleteFromSurface(SurfaceDef& def, const SurfacePlace& what) {
    using P = SurfacePlace;
    switch (what.kind) {
    case P::ofGroup:
        erase(def.groups, what.a);
        // Mappings tell their group by its place.
        for (CControlPages& s : def.sections)
            for (CControlSectionPage& p : s.pages)
                for (CControlMap& m : p.maps)
                    m.group = m.group == what.a ? -1 : m.group - (m.group > what.a);
        return;
    case P::ofCtrl:
        if (CHWCtrlGroup* in = what.group(def)) erase(in->ctrls, what.b);
        return;
    case P::ofSection:
        return erase(def.sections, what.a);
    case P::ofPage:
        if (CControlPages* in = what.section(def)) erase(in->pages, what.b);
        return;
    case P::ofMap:
        if (CControlSectionPage* in = what.page(def)) erase(in->maps, what.c);
        return;
    default:
        return;
    }
}
