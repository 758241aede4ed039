// Measurements of the desktop program; they print and judge nothing but that each step works at all.
#pragma once

namespace skyvault::test {

/// Rounds of import, views and export in the real window; memory, handles, GDI objects and windows are
/// printed after the tenth round, every fiftieth and the last. False when a step did not work.
bool Soak(int rounds);

/// What a key press costs until its picture is handed to the screen, and the program's start until its window
/// answers. Least and median of the repetitions, in milliseconds.
bool Latency(int repetitions);

}  // namespace skyvault::test
