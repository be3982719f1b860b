#include "access/AtkNode.h"

#include "access/AtkRoles.h"

#include <algorithm>
#include <string>

namespace {

/// The object as the library lays it out: its own part comes first.
struct NodeObject {
    AtkObject base;
    AccessTree* tree;
    AccessId id;
};
struct NodeClass {
    AtkObjectClass base;
};

NodeObject* node(gpointer object) {
    return static_cast<NodeObject*>(object);
}

Description look(gpointer object) {
    return node(object)->tree ? node(object)->tree->describe(node(object)->id) : Description();
}

std::vector<AccessId> inside(gpointer object) {
    return node(object)->tree ? node(object)->tree->children(node(object)->id)
                              : std::vector<AccessId>();
}

/// The library keeps no copy of these texts: they stay with the object.
const gchar* kept(AtkObject* object, const char* key, const std::string& text) {
    gchar* copy = g_strdup(text.c_str());
    g_object_set_data_full(G_OBJECT(object), key, copy, g_free);
    return copy;
}

/// The object of a thing with a new reference; null if it is gone.
AtkObject* refObject(AccessId id) {
    AtkObject* object = atkObjectOf(id);
    return object ? ATK_OBJECT(g_object_ref(object)) : nullptr;
}

const gchar* getName(AtkObject* object) {
    return kept(object, "name", look(object).name);
}

const gchar* getHelp(AtkObject* object) {
    return kept(object, "help", look(object).help);
}

AtkObject* getParent(AtkObject* object) {
    if (!node(object)->tree || node(object)->id == 0) return nullptr;
    return atkObjectOf(node(object)->tree->parent(node(object)->id));
}

gint countChildren(AtkObject* object) {
    return gint(inside(object).size());
}

AtkObject* refChild(AtkObject* object, gint index) {
    const std::vector<AccessId> children = inside(object);
    if (index < 0 || size_t(index) >= children.size()) return nullptr;
    return refObject(children[size_t(index)]);
}

gint indexInParent(AtkObject* object) {
    NodeObject* self = node(object);
    if (!self->tree || self->id == 0) return -1;
    const std::vector<AccessId> beside = self->tree->children(self->tree->parent(self->id));
    const auto at = std::find(beside.begin(), beside.end(), self->id);
    return at == beside.end() ? -1 : gint(at - beside.begin());
}

AtkRole getRole(AtkObject* object) {
    return node(object)->tree ? atkRole(look(object).role) : ATK_ROLE_INVALID;
}

AtkStateSet* refStates(AtkObject* object) {
    AtkStateSet* set = atk_state_set_new();
    if (!node(object)->tree) atk_state_set_add_state(set, ATK_STATE_DEFUNCT);
    addStates(set, look(object));
    return set;
}

// The place on the screen.

void getExtents(AtkComponent* object, gint* x, gint* y, gint* width, gint* height,
                AtkCoordType from) {
    CRect bounds = look(object).bounds;
    *width = bounds.width();
    *height = bounds.height();
    *x = bounds.left;
    *y = bounds.top;
    if (from == ATK_XY_SCREEN || !node(object)->tree) return;
    AccessTree* tree = node(object)->tree;
    AccessId around = node(object)->id;
    if (from == ATK_XY_PARENT)
        around = tree->parent(around);
    else
        for (AccessId up = tree->parent(around); up; up = tree->parent(up)) around = up;
    bounds = tree->describe(around).bounds;
    *x -= bounds.left;
    *y -= bounds.top;
}

AtkObject* refAtPoint(AtkComponent* object, gint x, gint y, AtkCoordType from) {
    if (!node(object)->tree) return nullptr;
    CPoint corner{};
    if (from != ATK_XY_SCREEN) {
        gint atX, atY, inX, inY, w, h;
        getExtents(object, &atX, &atY, &w, &h, ATK_XY_SCREEN);
        getExtents(object, &inX, &inY, &w, &h, from);
        corner = {atX - inX, atY - inY};
    }
    return refObject(node(object)->tree->at(node(object)->id, CPoint{x + corner.x, y + corner.y}));
}

gboolean grabFocus(AtkComponent* object) {
    return node(object)->tree && node(object)->tree->setFocus(node(object)->id);
}

void fillComponent(gpointer table, gpointer) {
    auto* face = static_cast<AtkComponentIface*>(table);
    face->get_extents = getExtents;
    face->ref_accessible_at_point = refAtPoint;
    face->grab_focus = grabFocus;
}

// What pressing does.

gint countActions(AtkAction*) {
    return 1;
}

gboolean doAction(AtkAction* object, gint) {
    return node(object)->tree && node(object)->tree->press(node(object)->id);
}

const gchar* getActionName(AtkAction* object, gint) {
    return kept(ATK_OBJECT(object), "action", look(object).action);
}

void fillAction(gpointer table, gpointer) {
    auto* face = static_cast<AtkActionIface*>(table);
    face->get_n_actions = countActions;
    face->do_action = doAction;
    face->get_name = getActionName;
}

// A number.

Description::Range rangeOf(gpointer object) {
    return look(object).range.value_or(Description::Range());
}

void getValue(AtkValue* object, gdouble* now, gchar** text) {
    const Description d = look(object);
    if (now) *now = d.range ? d.range->now : 0.0;
    if (text) *text = g_strdup(d.text.c_str());
}

AtkRange* getRange(AtkValue* object) {
    const Description::Range range = rangeOf(object);
    return atk_range_new(range.least, range.most, nullptr);
}

gdouble getStep(AtkValue* object) {
    return rangeOf(object).step;
}

void setValue(AtkValue* object, gdouble to) {
    if (node(object)->tree) node(object)->tree->setNumber(node(object)->id, to);
}

void fillValue(gpointer table, gpointer) {
    auto* face = static_cast<AtkValueIface*>(table);
    face->get_value_and_text = getValue;
    face->get_range = getRange;
    face->get_increment = getStep;
    face->set_value = setValue;
}

// A text, counted in characters.

std::string textOf(gpointer object) {
    return look(object).text;
}

Description::Caret caretOf(gpointer object) {
    return look(object).caret.value_or(Description::Caret());
}

gchar* getText(AtkText* object, gint from, gint to) {
    const std::string text = textOf(object);
    const gint count = gint(g_utf8_strlen(text.c_str(), -1));
    if (to < 0 || to > count) to = count;
    from = std::clamp(from, 0, to);
    return g_utf8_substring(text.c_str(), from, to);
}

gint countCharacters(AtkText* object) {
    return gint(g_utf8_strlen(textOf(object).c_str(), -1));
}

gunichar getCharacter(AtkText* object, gint at) {
    const std::string text = textOf(object);
    if (at < 0 || at >= countCharacters(object)) return 0;
    return g_utf8_get_char(g_utf8_offset_to_pointer(text.c_str(), at));
}

/// A character, or the whole line for all that is longer.
gchar* getString(AtkText* object, gint at, AtkTextGranularity unit, gint* from, gint* to) {
    const gint count = countCharacters(object);
    const bool one = unit == ATK_TEXT_GRANULARITY_CHAR;
    *from = one ? std::clamp(at, 0, count) : 0;
    *to = one ? std::min(*from + 1, count) : count;
    return getText(object, *from, *to);
}

gint getCaret(AtkText* object) {
    return caretOf(object).at;
}

gint countSelections(AtkText* object) {
    const Description::Caret caret = caretOf(object);
    return caret.selectionTo > caret.selectionFrom;
}

gchar* getSelection(AtkText* object, gint index, gint* from, gint* to) {
    const Description::Caret caret = caretOf(object);
    if (index != 0 || !countSelections(object)) return nullptr;
    *from = caret.selectionFrom;
    *to = caret.selectionTo;
    return getText(object, *from, *to);
}

void fillText(gpointer table, gpointer) {
    auto* face = static_cast<AtkTextIface*>(table);
    face->get_text = getText;
    face->get_character_count = countCharacters;
    face->get_character_at_offset = getCharacter;
    face->get_string_at_offset = getString;
    face->get_caret_offset = getCaret;
    face->get_n_selections = countSelections;
    face->get_selection = getSelection;
}

void setText(AtkEditableText* object, const gchar* to) {
    if (node(object)->tree) node(object)->tree->setText(node(object)->id, to);
}

void fillEditable(gpointer table, gpointer) {
    static_cast<AtkEditableTextIface*>(table)->set_text_contents = setText;
}

void fillClass(gpointer table, gpointer) {
    auto* own = static_cast<AtkObjectClass*>(table);
    own->get_name = getName;
    own->get_description = getHelp;
    own->get_parent = getParent;
    own->get_n_children = countChildren;
    own->ref_child = refChild;
    own->get_index_in_parent = indexInParent;
    own->get_role = getRole;
    own->ref_state_set = refStates;
}

void addFace(GType type, GType face, GInterfaceInitFunc fill) {
    const GInterfaceInfo info = {fill, nullptr, nullptr};
    g_type_add_interface_static(type, face, &info);
}

GType makeType(unsigned faces) {
    const std::string name = "SondravaNode" + std::to_string(faces);
    const GType type =
        g_type_register_static_simple(ATK_TYPE_OBJECT, name.c_str(), sizeof(NodeClass), fillClass,
                                      sizeof(NodeObject), nullptr, GTypeFlags(0));
    addFace(type, ATK_TYPE_COMPONENT, fillComponent);
    if (faces & AtkNode::action) addFace(type, ATK_TYPE_ACTION, fillAction);
    if (faces & AtkNode::value) addFace(type, ATK_TYPE_VALUE, fillValue);
    if (faces & AtkNode::text) {
        addFace(type, ATK_TYPE_TEXT, fillText);
        addFace(type, ATK_TYPE_EDITABLE_TEXT, fillEditable);
    }
    if (faces & AtkNode::window) addFace(type, ATK_TYPE_WINDOW, nullptr);
    return type;
}

} // namespace

unsigned AtkNode::facesOf(const Description& d) {
    const bool holdsText = d.role == Role::textField || d.role == Role::passwordField ||
                           d.role == Role::number || d.role == Role::comboBox;
    const bool isWindow = d.role == Role::window || d.role == Role::dialog || d.role == Role::alert;
    return (d.action.empty() ? 0u : action) | (d.range ? value : 0u) | (holdsText ? text : 0u) |
           (isWindow ? window : 0u);
}

AtkObject* AtkNode::make(AccessTree* tree, AccessId id, unsigned faces) {
    static GType types[2 * window] = {};
    if (!types[faces]) types[faces] = makeType(faces);
    auto* object = static_cast<AtkObject*>(g_object_new(types[faces], nullptr));
    node(object)->tree = tree;
    node(object)->id = id;
    return object;
}

void AtkNode::forget(AtkObject* object) {
    node(object)->tree = nullptr;
    atk_object_notify_state_change(object, ATK_STATE_DEFUNCT, TRUE);
}
