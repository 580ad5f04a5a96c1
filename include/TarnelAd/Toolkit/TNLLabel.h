#pragma once

#include <memory>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

// A line of text. Its intrinsic size is the text's, as the peer measures it.
class TNL_EXPORT TNLLabel : public TNLView {
 public:
  explicit TNLLabel(const TNLRect& frame = {});
  static std::shared_ptr<TNLLabel> create(const TNLRect& frame = {});

  std::string className() const override { return "TNLLabel"; }

  const std::optional<std::string>& text() const { return text_; }
  void setText(const std::optional<std::string>& text);

  TNLSize intrinsicContentSize() const override;

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;

 private:
  std::optional<std::string> text_;
};
