#pragma once

#include <memory>
#include <optional>
#include <string>

#include "TarnelAd/Toolkit/TNLViewController.h"

class TNLButton;
class TNLLabel;
class TNLWebView;

// The small in-app browser in which a creative's link opens: the advertiser's brand name as a
// title, a "Done" button that closes it, and the page below them. The page navigates freely.
// Main thread only.
class TNLClickOutViewController : public TNLViewController {
 public:
  // Layout, in points.
  static constexpr double kTitleTopMargin = 8;  // below the top of the safe area
  static constexpr double kDoneTrailingMargin = 16;
  static constexpr double kPageTopMargin = 16;  // below the title

  TNLClickOutViewController(const std::optional<std::string>& brandName,
                            const std::optional<std::string>& url);
  static std::shared_ptr<TNLClickOutViewController> create(
      const std::optional<std::string>& brandName, const std::optional<std::string>& url);

  // A plain white view.
  void loadView() override;
  // Lays out the title, the button and the page, then loads the address.
  void viewDidLoad() override;

  void formatBrandName();
  void formatDoneButton();
  void formatWebview();
  void loadClickOutUrl();
  void doneButtonTapped();

  const std::shared_ptr<TNLLabel>& brandNameLabel() const { return brandNameLabel_; }
  void setBrandNameLabel(std::shared_ptr<TNLLabel> label) { brandNameLabel_ = std::move(label); }
  const std::optional<std::string>& brandName() const { return brandName_; }
  void setBrandName(std::optional<std::string> name) { brandName_ = std::move(name); }
  const std::shared_ptr<TNLWebView>& webView() const { return webView_; }
  void setWebView(std::shared_ptr<TNLWebView> webView) { webView_ = std::move(webView); }
  const std::shared_ptr<TNLButton>& doneButton() const { return doneButton_; }
  void setDoneButton(std::shared_ptr<TNLButton> button) { doneButton_ = std::move(button); }
  const std::optional<std::string>& url() const { return url_; }
  void setUrl(std::optional<std::string> url) { url_ = std::move(url); }

 private:
  std::shared_ptr<TNLLabel> brandNameLabel_;
  std::optional<std::string> brandName_;
  std::shared_ptr<TNLWebView> webView_;
  std::shared_ptr<TNLButton> doneButton_;
  std::optional<std::string> url_;
};
