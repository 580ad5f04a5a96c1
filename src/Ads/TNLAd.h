#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Ads/TNLAdDelegate.h"
#include "Platform/Foundation/TNLJSON.h"

// One ad returned by a demand source: the fields read from its JSON record (or, for a VAST ad,
// the resolved document and its media file), the complete record handed to the creative, and the
// zone and HTML that the handlers attach before it is shown. Absent JSON members stay absent
// (null JSON, empty optionals).
class TNLAd {
 public:
  // Every string empty and every object empty.
  TNLAd();
  TNLAd(std::optional<std::string> sdkType, std::optional<std::string> creativeTag, TNLJson assets,
        TNLJson adCopy, TNLJson flags, TNLJson trackers, TNLJson payload, TNLJson completeAd);
  virtual ~TNLAd() = default;

  // Valid when the creative tag is present and not blank.
  bool adIsValid() const;
  // Tell the listener, when there is one, that the creative closed or granted the reward.
  void adClosed() const;
  void adRewarded() const;

  const std::optional<std::string>& sdkType() const { return sdkType_; }
  void setSdkType(std::optional<std::string> value) { sdkType_ = std::move(value); }
  const std::optional<std::string>& creativeTag() const { return creativeTag_; }
  void setCreativeTag(std::optional<std::string> value) { creativeTag_ = std::move(value); }
  const TNLJson& assets() const { return assets_; }
  void setAssets(TNLJson value) { assets_ = std::move(value); }
  const TNLJson& adCopy() const { return adCopy_; }
  void setAdCopy(TNLJson value) { adCopy_ = std::move(value); }
  const TNLJson& flags() const { return flags_; }
  void setFlags(TNLJson value) { flags_ = std::move(value); }
  const TNLJson& trackers() const { return trackers_; }
  void setTrackers(TNLJson value) { trackers_ = std::move(value); }
  const TNLJson& payload() const { return payload_; }
  void setPayload(TNLJson value) { payload_ = std::move(value); }
  const std::optional<std::string>& html() const { return html_; }
  void setHtml(std::optional<std::string> value) { html_ = std::move(value); }
  const TNLJson& fullAd() const { return fullAd_; }
  void setFullAd(TNLJson value) { fullAd_ = std::move(value); }
  bool isVast() const { return isVast_; }
  void setIsVast(bool value) { isVast_ = value; }
  const std::string& xml() const { return xml_; }
  void setXml(std::string value) { xml_ = std::move(value); }
  const std::string& mediaFile() const { return mediaFile_; }
  void setMediaFile(std::string value) { mediaFile_ = std::move(value); }
  std::shared_ptr<TNLAdDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<TNLAdDelegate>& delegate) { delegate_ = delegate; }
  const std::optional<std::string>& zone() const { return zone_; }
  void setZone(std::optional<std::string> value) { zone_ = std::move(value); }

 private:
  std::optional<std::string> sdkType_;
  std::optional<std::string> creativeTag_;
  TNLJson assets_;
  TNLJson adCopy_;
  TNLJson flags_;
  TNLJson trackers_;
  TNLJson payload_;
  std::optional<std::string> html_;
  TNLJson fullAd_;
  bool isVast_ = false;
  std::string xml_;
  std::string mediaFile_;
  std::weak_ptr<TNLAdDelegate> delegate_;
  std::optional<std::string> zone_;
};
