#pragma once

/// A list of projects that program changes choose from. Interface thread.
class CFileMapperBase {
public:
    virtual ~CFileMapperBase() = default;
    virtual bool enabled() = 0;
    /// Chooses entry `index`, ignored outside the list; with `play` it is opened as well.
    virtual void setProgram(int index, bool play) = 0;
};
