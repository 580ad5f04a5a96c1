#pragma once

/// @file
/// @brief TNLLabel: a line of text.

#include <memory>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

/// A line of text. Its intrinsic size is the text's, as the peer measures it. Main thread.
class TNL_EXPORT TNLLabel : public TNLView {
 public:
  /// A label at `frame`; own it with std::shared_ptr.
  ///@{
  explicit TNLLabel(const TNLRect& frame = {});
  static std::shared_ptr<TNLLabel> create(const TNLRect& frame = {});
  ///@}

  /// "TNLLabel".
  std::string className() const override { return "TNLLabel"; }

  /// The text; std::nullopt shows nothing.
  ///@{
  const std::optional<std::string>& text() const { return text_; }
  void setText(const std::optional<std::string>& text);
  ///@}

  /// The text's size, as the backend measures it.
  TNLSize intrinsicContentSize() const override;

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;

 private:
  std::optional<std::string> text_;
};
