#pragma once

class CMixer;
class CQV;
class ProjectUi;

/// What a project file is written from and read into. Nothing of it is owned.
struct Project {
    CQV* host;
    CMixer* mixer; ///< what the file keeps of the mixer view
    ProjectUi* ui;
};
