#!/usr/bin/python3
"""Makes a song through the accessible tree alone: no key is pressed, no pointer moved.

Takes a folder, into which the song is saved and exported. Ends with status 0 and the line "done",
else with a line that tells what did not come.
"""
import os
import sys
import time

import pyatspi

PATIENCE = 40.0
folder = sys.argv[1]
app = None


def awaited(what, look):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        if app:
            app.clear_cache()  # no loop turns here that would hear of changes
        try:
            found = look()
        except (LookupError, RuntimeError, NotImplementedError, AttributeError, StopIteration):
            found = None  # it went while it was looked at
        except Exception as error:  # the bindings raise the errors of the bus as they are
            if "atspi" not in str(error):
                raise
            found = None
        if found:
            return found
        time.sleep(0.02)
    print(what, "does not come")
    sys.exit(1)


def program():
    desktop = pyatspi.Registry.getDesktop(0)
    desktop.clear_cache()
    return next((a for a in desktop if a and a.name.startswith("Sondrava")), None)


app = awaited("the program", program)


def things(root):
    yield root
    for child in root:
        if child:
            yield from things(child)


def thing(role, name, root=app):
    """The first with this role whose name begins so."""
    def fits(t):
        return t.getRoleName() in role.split("|") and t.name.startswith(name)
    return awaited(f"{role} '{name}'", lambda: next((t for t in things(root) if fits(t)), None))


def has(t, state):
    return t.getState().contains(state)


def press(t):
    t.queryAction().doAction(0)


def entry(name):
    """Of the menus that are open."""
    return next((t for w in app if w.getRoleName() == "menu" for t in things(w)
                 if t.name.startswith(name)), None)


def command(menu, *entries):
    press(thing("menu", menu, thing("menu bar", "")))
    for name in entries:
        press(awaited(name, lambda: entry(name)))


def gone(role):
    awaited("the end of the " + role, lambda: all(w.getRoleName() != role for w in app))


def fill(field, text):
    field.queryEditableText().setTextContents(text)
    awaited("the text", lambda: field.queryText().getText(0, -1) == text)


def button(name, root=app):
    return thing("push button|toggle button", name, root)


def settled(role, name):
    """The thing, once it is the same one for a while: heads are made anew when the song changes."""
    seen = []

    def same():
        seen.append(thing(role, name).path)
        return len(seen) > 20 and len(set(seen[-20:])) == 1
    awaited("rest at " + name, same)
    return thing(role, name)


# A song with a track for a recording.
command("File", "New...", "Multi-track recorder")
track = thing("panel", "Audio 1").name
tempo = thing("spin button", "Tempo")
tempo.queryValue().currentValue = 100.0
awaited("the tempo", lambda: abs(tempo.queryValue().currentValue - 100.0) < 0.01)

# Recorded,
position = thing("spin button", "Position")
before = position.queryText().getText(0, -1)
press(button("Record"))
awaited("the movement", lambda: position.queryText().getText(0, -1) > before.replace("001.", "002.", 1))
press(button("Stop"))

# mixed,
press(settled("push button|toggle button", "Mute, " + track))
awaited("the mute", lambda: has(button("Mute, " + track), pyatspi.STATE_PRESSED))
press(button("Mute, " + track))
awaited("the end of the mute", lambda: not has(button("Mute, " + track), pyatspi.STATE_PRESSED))
volume = thing("slider", "Monitor volume")
volume.queryValue().currentValue = 40
awaited("the volume", lambda: volume.queryValue().currentValue == 40)

# saved and exported.
command("File", "Save as...")
dialog = thing("dialog", "")
fill(thing("entry|text", "Name", dialog), folder + "/spoken.qv")
press(button("Save", dialog))
gone("dialog")
command("File", "Export Project")
dialog = thing("dialog", "Export")
press(button("Save", dialog))
naming = awaited("the name", lambda: next(d for d in app if d.getRoleName() == "dialog" and any(
    t.getRoleName() in ("entry", "text") for t in things(d))))
fill(thing("entry|text", "Name", naming), folder + "/spoken.wav")
press(button("Save", naming))
awaited("the file", lambda: os.path.exists(folder + "/spoken.wav"))
if any(d.getRoleName() == "dialog" for d in app):
    press(button("Close", thing("dialog", "Export")))
gone("dialog")
command("File", "Exit")
awaited("the end", lambda: program() is None)
print("done")
