#pragma once

/// @file
/// @brief TNLButton: a button with titles and tap actions.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

/// The look of a button; the values are the platform's.
enum class TNLButtonType {
  custom = 0,
  system = 1,
};

/// The states a button has a title for; the values are the platform's.
enum class TNLControlState {
  normal = 0,
  highlighted = 1,
  disabled = 2,
  selected = 4,
};

/// A button with a title per state and actions run when it is tapped (touch up inside). Main
/// thread.
class TNL_EXPORT TNLButton : public TNLView {
 public:
  /// Run on the main thread with the tapped button.
  using TapAction = std::function<void(TNLButton& button)>;

  /// A button of the type; own it with std::shared_ptr.
  ///@{
  explicit TNLButton(TNLButtonType type = TNLButtonType::system);
  static std::shared_ptr<TNLButton> create(TNLButtonType type = TNLButtonType::system);
  ///@}

  /// "TNLButton".
  std::string className() const override { return "TNLButton"; }
  /// The type it was made with.
  TNLButtonType buttonType() const { return type_; }

  /// The title shown in `state`; std::nullopt removes it.
  void setTitle(const std::optional<std::string>& title, TNLControlState state);
  /// A state without a title of its own shows the normal title.
  std::optional<std::string> titleForState(TNLControlState state) const;

  /// Adds an action; the button keeps it for its life.
  void addTapAction(TapAction action);
  /// A tap: runs the actions in the order added. The backend calls it for a real click.
  void sendTap();

  /// The title's size, as the backend measures it.
  TNLSize intrinsicContentSize() const override;

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;

 private:
  TNLButtonType type_;
  std::map<TNLControlState, std::string> titles_;
  std::vector<TapAction> actions_;
};
