// The MODIFY commands that only the menu has.
#pragma once

#include "session/session.h"

namespace skyvault {

/// One of the three flags of Modifications. Nothing happens without a panorama.
void ToggleModification(Session& session, bool Modifications::*flag);
void ResetAllModifications(Session& session);

}  // namespace skyvault
