#pragma once

#include <string>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"
#include "TarnelAd/Toolkit/TNLRect.h"

// JSON helpers of the measurement SDK, and the view states of the hierarchy that sessions are
// sent: {"x", "y", "width", "height", "clipsToBounds"} in screen coordinates, optionally
// "adSessionId", "isFriendlyObstructionFor" and "childViews".
class OMIDTarnelDictionaryUtil {
 public:
  // Compact UTF-8 JSON text, the form in which dictionaries travel inside commands.
  static std::string stringFromJSON(const TNLJson& json);

  // The state of a rectangle in screen coordinates and its clipping flag.
  static TNLJson stateWithFrame(const TNLRect& frame, bool clipsToBounds);
  // The zero rectangle with clipping: what a session whose ad view cannot be seen is sent.
  static TNLJson emptyState();
  // Appends `child` to the parent's "childViews", which the first child creates.
  static void addChildState(TNLJson& parent, TNLJson child);
  static void setSessionId(TNLJson& state, const std::string& sessionId);
  static void setFriendlyObstructionSessionIds(TNLJson& state,
                                               const std::vector<std::string>& sessionIds);
};
