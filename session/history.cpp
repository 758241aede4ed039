#include "session/history.h"

namespace skyvault {
namespace {

/// Moves one step from one list to the other, by way of `current`.
bool Step(std::vector<Modifications>& from, std::vector<Modifications>& to, Modifications& current) {
    if (from.empty()) return false;
    to.push_back(current);
    current = from.back();
    from.pop_back();
    return true;
}

}  // namespace

void Remember(History& history, const Modifications& before, const Modifications& after) {
    if (before == after) return;
    history.redo.clear();
    if (history.stepIsOpen) return;
    if (history.undo.size() == kLongestHistory) history.undo.erase(history.undo.begin());
    history.undo.push_back(before);
    history.stepIsOpen = true;
}

bool Undo(History& history, Modifications& current) {
    EndStep(history);
    return Step(history.undo, history.redo, current);
}

bool Redo(History& history, Modifications& current) {
    EndStep(history);
    return Step(history.redo, history.undo, current);
}

}  // namespace skyvault
