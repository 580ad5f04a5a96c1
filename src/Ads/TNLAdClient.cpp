#include "Ads/TNLAdClient.h"

#include <algorithm>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdFactory.h"
#include "Ads/VAST/TNLVastWorkflow.h"
#include "Manifest/ManifestObjects/DemandSource/TNLDemandSource.h"
#include "Manifest/ManifestObjects/DemandSource/TNLDemandSources.h"
#include "Manifest/TNLManifestHandler.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"

namespace {

const char* productCode(bool isBannerAd, bool isRewarded) {
  if (isBannerAd) {
    return "3";
  }
  return isRewarded ? "2" : "1";
}

TNLErrorPtr noSourceLeftError() {
  return TNLError::make(TNLURLErrorDomain, 0);
}

}  // namespace

std::shared_ptr<TNLDemandSource> TNLAdClient::DemandSourceList::first() const {
  std::lock_guard lock(mutex_);
  return sources_.empty() ? nullptr : sources_.front();
}

bool TNLAdClient::DemandSourceList::removeFirst(size_t& left) {
  std::lock_guard lock(mutex_);
  if (sources_.empty()) {
    left = 0;
    return false;
  }
  sources_.erase(sources_.begin());
  left = sources_.size();
  return true;
}

void TNLAdClient::getFSAdForZone(const std::string& zone, bool rewarded, FSAdSuccess success,
                                 Failure failure) const {
  try {
    getAdForZone(
        zone, false, rewarded,
        [success = std::move(success)](const std::shared_ptr<TNLAd>& ad) {
          success(TNLFSAd::initFromAd(*ad));
        },
        std::move(failure));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to retrieve Full Screen Ad due to exception: %@", error);
  }
}

void TNLAdClient::getBannerAdForZone(const std::string& zone, BannerAdSuccess success,
                                     Failure failure) const {
  try {
    getAdForZone(
        zone, true, false,
        [success = std::move(success)](const std::shared_ptr<TNLAd>& ad) {
          success(TNLBannerAd::initFromAd(*ad));
        },
        std::move(failure));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to retrieve Banner Ad due to exception: %@", error);
  }
}

void TNLAdClient::getAdForZone(const std::string& zone, bool isBannerAd, bool isRewarded,
                               AdSuccess success, Failure failure) const {
  const TNLAdClient client;
  TNLManifestHandler::retrieveManifestWithSuccess(
      [client, zone, isBannerAd, isRewarded, success,
       failure](const std::shared_ptr<TNLManifest>& manifest) {
        std::vector<std::shared_ptr<TNLDemandSource>> sources;
        if (manifest && manifest->demandSources()) {
          sources = manifest->demandSources()->demandSources();
        }
        // Equal ranks keep the manifest's order.
        std::stable_sort(sources.begin(), sources.end(),
                         [](const auto& a, const auto& b) { return a->rank() < b->rank(); });
        client.attemptToRetrieveAdFromDemandSources(
            std::make_shared<DemandSourceList>(std::move(sources)), zone, isBannerAd, isRewarded,
            success, failure);
      },
      failure);
}

void TNLAdClient::attemptToRetrieveAdFromDemandSources(
    const std::shared_ptr<DemandSourceList>& sources, const std::string& zone, bool isBannerAd,
    bool isRewarded, AdSuccess success, Failure failure) const {
  const auto source = sources->first();
  if (!source) {
    // A manifest without demand sources: nothing to ask.
    failure(noSourceLeftError());
    return;
  }
  const std::map<std::string, std::string> perCall = {
      {TNL_ZONE_MACRO, zone}, {TNL_PRODUCT_MACRO, productCode(isBannerAd, isRewarded)}};
  const std::string url = TNLUrlParser().fillMacrosForUrl(source->url().value_or(""), perCall);

  const TNLAdClient client;
  // Every failure report of the source, however often it comes, moves the shared list on.
  const auto nextSource = [client, sources, zone, isBannerAd, isRewarded, success, failure] {
    size_t left = 0;
    if (!sources->removeFirst(left)) {
      return;  // an extra report after the list ran out ends that chain
    }
    if (left == 0) {
      failure(noSourceLeftError());
      return;
    }
    client.attemptToRetrieveAdFromDemandSources(sources, zone, isBannerAd, isRewarded, success,
                                                failure);
  };
  getAdFromUrl(
      url, isBannerAd,
      [success, nextSource](const std::shared_ptr<TNLAd>& ad) {
        if (ad && ad->adIsValid()) {
          success(ad);
        } else {
          nextSource();
        }
      },
      [nextSource](const TNLErrorPtr&) { nextSource(); });
}

void TNLAdClient::getAdFromUrl(const std::string& url, bool /*isBannerAd*/, AdSuccess success,
                               Failure failure) const {
  const TNLAdClient client;
  TNLNetworkClient::makeURLRequestWithURL(
      url, GET_METHOD,
      [client, success, failure](const std::string& body) {
        client.generateAdFromData(body, success, failure);
      },
      failure);
}

void TNLAdClient::generateAdFromData(const std::string& data, AdSuccess success,
                                     Failure failure) const {
  const TNLJson value = TNLJSON::parse(data);
  if (value.is_object()) {
    success(TNLAdFactory::generateAdFromDictionary(value));
    return;
  }
  TNLVastWorkflow::create()->processXMLData(
      data,
      [success](const std::string& document, const std::string& mediaFileName) {
        const auto manifest = TNLManifestHandler::sharedHandler()->manifest();
        const auto templateURI = manifest ? manifest->vastTemplateURI() : std::nullopt;
        success(TNLAdFactory::generateVASTAdFromXML(document, mediaFileName, templateURI));
      },
      failure);
}
