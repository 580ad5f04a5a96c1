#include "AppVerificationLibrary/OMIDDictionaryUtil.h"

namespace {

constexpr char kChildViewsKey[] = "childViews";

}  // namespace

std::string OMIDTarnelDictionaryUtil::stringFromJSON(const TNLJson& json) {
  return TNLJSON::serialize(json);
}

TNLJson OMIDTarnelDictionaryUtil::stateWithFrame(const TNLRect& frame, bool clipsToBounds) {
  TNLJson state = TNLJson::object();
  // Room for the frame, clipping, a mark and the children: one allocation per state, which
  // matters when a walk describes thousands of views.
  state.get_ref<TNLJson::object_t&>().reserve(7);
  state["x"] = frame.origin.x;
  state["y"] = frame.origin.y;
  state["width"] = frame.size.width;
  state["height"] = frame.size.height;
  state["clipsToBounds"] = clipsToBounds;
  return state;
}

TNLJson OMIDTarnelDictionaryUtil::emptyState() {
  return stateWithFrame({}, true);
}

void OMIDTarnelDictionaryUtil::addChildState(TNLJson& parent, TNLJson child) {
  auto children = parent.find(kChildViewsKey);
  if (children == parent.end()) {
    parent[kChildViewsKey] = TNLJson::array();
    children = parent.find(kChildViewsKey);
  }
  children->push_back(std::move(child));
}

void OMIDTarnelDictionaryUtil::setSessionId(TNLJson& state, const std::string& sessionId) {
  state["adSessionId"] = sessionId;
}

void OMIDTarnelDictionaryUtil::setFriendlyObstructionSessionIds(
    TNLJson& state, const std::vector<std::string>& sessionIds) {
  state["isFriendlyObstructionFor"] = sessionIds;
}
