#pragma once

/// The window of the made plug-in: 300 by 200, on a connection of its own, inside another one. It
/// counts the keys and clicks that reach it.
class MadeEditor {
public:
    explicit MadeEditor(unsigned long parent);
    ~MadeEditor();
    MadeEditor(const MadeEditor&) = delete;
    MadeEditor& operator=(const MadeEditor&) = delete;

    int keys = 0, clicks = 0;

    void idle();
    void setSize(int width, int height);

private:
    struct _XDisplay* display;
    unsigned long window = 0;
};
