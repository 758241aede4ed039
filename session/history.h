// Undo and redo of how the panorama is turned, mirrored and stamped.
#pragma once

#include <vector>

#include "projection/modifications.h"

namespace skyvault {

/// The states that Undo and Redo go back to, the nearest last. At most kLongestHistory of each.
struct History {
    std::vector<Modifications> undo, redo;
    bool stepIsOpen = false;  ///< what changes next belongs to the step before: a held key goes on
};

inline constexpr std::size_t kLongestHistory = 1000;

/// What changes from now on is a step of its own.
inline void EndStep(History& history) {
    history.stepIsOpen = false;
}

/// To be told after every change: `before` becomes what Undo goes back to, unless the change goes on with an
/// open step; the step is open from now on. What had been undone cannot be redone any more. Without any
/// change nothing is kept.
void Remember(History& history, const Modifications& before, const Modifications& after);

/// Goes one step back or forward; false when there is none.
bool Undo(History& history, Modifications& current);
bool Redo(History& history, Modifications& current);

}  // namespace skyvault
