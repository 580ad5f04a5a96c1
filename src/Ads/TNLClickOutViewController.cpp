#include "Ads/TNLClickOutViewController.h"

#include "Platform/Http/TNLURLRequest.h"
#include "TNLLog.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLLayoutGuide.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

constexpr char kDoneTitle[] = "Done";

std::shared_ptr<TNLLayoutConstraint> pin(const std::shared_ptr<TNLLayoutItem>& item,
                                         TNLLayoutAttribute attribute,
                                         const std::shared_ptr<TNLLayoutItem>& to,
                                         TNLLayoutAttribute toAttribute, double constant) {
  return TNLLayoutConstraint::constraintWithItem(item, attribute, TNLLayoutRelation::equal, to,
                                                 toAttribute, 1.0, constant);
}

}  // namespace

TNLClickOutViewController::TNLClickOutViewController(const std::optional<std::string>& brandName,
                                                     const std::optional<std::string>& url) {
  try {
    TNLWebViewConfiguration configuration;
    configuration.javaScriptEnabled = true;
    configuration.mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::none;
    configuration.allowsInlineMediaPlayback = true;
    webView_ = TNLWebView::create(TNLRect(), configuration);
    brandName_ = brandName;
    brandNameLabel_ = TNLLabel::create(TNLRect());
    doneButton_ = TNLButton::create(TNLButtonType::system);
    url_ = url;
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to format clickout VC due to exception: %@", error);
  }
}

std::shared_ptr<TNLClickOutViewController> TNLClickOutViewController::create(
    const std::optional<std::string>& brandName, const std::optional<std::string>& url) {
  return std::make_shared<TNLClickOutViewController>(brandName, url);
}

void TNLClickOutViewController::loadView() {
  TNLViewController::loadView();
  view()->setBackgroundColor(TNLColor::white());
}

void TNLClickOutViewController::viewDidLoad() {
  TNLViewController::viewDidLoad();
  try {
    formatBrandName();
    formatDoneButton();
    formatWebview();
    loadClickOutUrl();
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to properly load clickout VC due to exception: %@", error);
  }
}

void TNLClickOutViewController::formatBrandName() {
  const auto view = this->view();
  const auto safeArea = view->safeAreaLayoutGuide();
  view->addSubview(brandNameLabel_);
  brandNameLabel_->setText(brandName_);
  brandNameLabel_->setTranslatesAutoresizingMaskIntoConstraints(false);
  view->addConstraints({
      pin(brandNameLabel_, TNLLayoutAttribute::top, safeArea, TNLLayoutAttribute::top,
          kTitleTopMargin),
      pin(brandNameLabel_, TNLLayoutAttribute::centerX, safeArea, TNLLayoutAttribute::centerX, 0),
  });
}

void TNLClickOutViewController::formatDoneButton() {
  const auto view = this->view();
  const auto safeArea = view->safeAreaLayoutGuide();
  doneButton_->setTitle(kDoneTitle, TNLControlState::normal);
  const std::weak_ptr<TNLViewController> weakSelf = weak_from_this();
  doneButton_->addTapAction([weakSelf](TNLButton&) {
    if (const auto self = std::static_pointer_cast<TNLClickOutViewController>(weakSelf.lock())) {
      self->doneButtonTapped();
    }
  });
  view->addSubview(doneButton_);
  doneButton_->setTranslatesAutoresizingMaskIntoConstraints(false);
  view->addConstraints({
      pin(doneButton_, TNLLayoutAttribute::trailing, safeArea, TNLLayoutAttribute::trailing,
          -kDoneTrailingMargin),
      pin(doneButton_, TNLLayoutAttribute::centerY, brandNameLabel_, TNLLayoutAttribute::centerY,
          0),
  });
}

void TNLClickOutViewController::formatWebview() {
  const auto view = this->view();
  const auto safeArea = view->safeAreaLayoutGuide();
  view->addSubview(webView_);
  webView_->setTranslatesAutoresizingMaskIntoConstraints(false);
  view->addConstraints({
      pin(webView_, TNLLayoutAttribute::leading, safeArea, TNLLayoutAttribute::leading, 0),
      pin(webView_, TNLLayoutAttribute::trailing, safeArea, TNLLayoutAttribute::trailing, 0),
      pin(webView_, TNLLayoutAttribute::bottom, safeArea, TNLLayoutAttribute::bottom, 0),
      pin(webView_, TNLLayoutAttribute::top, brandNameLabel_, TNLLayoutAttribute::bottom,
          kPageTopMargin),
  });
}

void TNLClickOutViewController::loadClickOutUrl() {
  // An address that does not parse loads nothing.
  if (const auto address = url_ ? TNLURLRequest::parseURL(*url_) : std::nullopt) {
    webView_->loadRequest(*address);
  }
}

void TNLClickOutViewController::doneButtonTapped() {
  dismiss(true);
}
