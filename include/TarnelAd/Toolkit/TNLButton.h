#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

enum class TNLButtonType {
  custom = 0,
  system = 1,
};

enum class TNLControlState {
  normal = 0,
  highlighted = 1,
  disabled = 2,
  selected = 4,
};

// A button with a title per state and actions run when it is tapped (touch up inside).
class TNL_EXPORT TNLButton : public TNLView {
 public:
  using TapAction = std::function<void(TNLButton& button)>;

  explicit TNLButton(TNLButtonType type = TNLButtonType::system);
  static std::shared_ptr<TNLButton> create(TNLButtonType type = TNLButtonType::system);

  std::string className() const override { return "TNLButton"; }
  TNLButtonType buttonType() const { return type_; }

  void setTitle(const std::optional<std::string>& title, TNLControlState state);
  // A state without a title of its own shows the normal title.
  std::optional<std::string> titleForState(TNLControlState state) const;

  void addTapAction(TapAction action);
  // A tap: runs the actions in the order added. The backend calls it for a real click.
  void sendTap();

  TNLSize intrinsicContentSize() const override;

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;

 private:
  TNLButtonType type_;
  std::map<TNLControlState, std::string> titles_;
  std::vector<TapAction> actions_;
};
