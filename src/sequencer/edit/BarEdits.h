#pragma once

class CSeq;

/// Time comes into the song, or leaves it, between the locators of the current program; locked
/// tracks stay as they are. Interface thread; one step each, none where the right locator does not
/// lie behind the left one.

/// "Insert bars": everything at or after the left locator moves on by the time between the
/// locators. Parts that span it are split there; sections that do grow.
void insertBars(CSeq* seq);
/// "Remove bars": what lies between the locators goes, and what follows closes up. Parts that reach
/// into that time lose it, sections shrink. The last tempo and the last signature of that time stay
/// in force behind it.
void removeBars(CSeq* seq);
