#pragma once

class CMapProg;
class CQV;

/// The list of controller maps in force, null when there is none.
CMapProg* currentMaps(CQV* host);
