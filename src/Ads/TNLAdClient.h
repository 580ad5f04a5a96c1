#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLError.h"

class TNLAd;
class TNLBannerAd;
class TNLDemandSource;
class TNLFSAd;

// Obtains one ad for a zone: makes sure a manifest is at hand, orders its demand sources by rank
// and asks them one at a time, each with a GET of its macro-filled URL, until one returns a valid
// ad. A JSON object is an ad record; anything else is handed to a VAST workflow. When no source is
// left the failure receives an error of the URL domain with code 0.
//
// The client keeps no state: each request lives in its chain of callbacks, which run on whatever
// thread completes the step (the HTTP thread for network answers). As a rule a request ends with
// one callback; a VAST workflow that reports failure twice advances the shared source list twice
// (so the caller may hear twice), and one that ends silently leaves the request without a callback.
class TNLAdClient {
 public:
  using AdSuccess = std::function<void(const std::shared_ptr<TNLAd>& ad)>;
  using FSAdSuccess = std::function<void(const std::shared_ptr<TNLFSAd>& ad)>;
  using BannerAdSuccess = std::function<void(const std::shared_ptr<TNLBannerAd>& ad)>;
  using Failure = std::function<void(const TNLErrorPtr& error)>;

  // The demand sources still to ask; shared by the attempts of one request.
  class DemandSourceList {
   public:
    explicit DemandSourceList(std::vector<std::shared_ptr<TNLDemandSource>> sources)
        : sources_(std::move(sources)) {}
    std::shared_ptr<TNLDemandSource> first() const;
    // Removes the first entry; false when there was none. Returns the entries left in `left`.
    bool removeFirst(size_t& left);

   private:
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<TNLDemandSource>> sources_;
  };

  // Product code "2" when rewarded, else "1"; success receives a full-screen ad.
  void getFSAdForZone(const std::string& zone, bool rewarded, FSAdSuccess success,
                      Failure failure) const;
  // Product code "3"; success receives a banner ad.
  void getBannerAdForZone(const std::string& zone, BannerAdSuccess success, Failure failure) const;
  // The general request. A failed manifest retrieval reaches `failure` unchanged.
  void getAdForZone(const std::string& zone, bool isBannerAd, bool isRewarded, AdSuccess success,
                    Failure failure) const;
  // One attempt on the list's first source, and on its failure the next.
  void attemptToRetrieveAdFromDemandSources(const std::shared_ptr<DemandSourceList>& sources,
                                            const std::string& zone, bool isBannerAd,
                                            bool isRewarded, AdSuccess success,
                                            Failure failure) const;
  // One GET of a filled URL; the body becomes an ad through generateAdFromData.
  void getAdFromUrl(const std::string& url, bool isBannerAd, AdSuccess success,
                    Failure failure) const;
  // A JSON object body becomes an ad record (success even when the factory gives nothing);
  // anything else goes through a VAST workflow. Also used with markup supplied by the host.
  void generateAdFromData(const std::string& data, AdSuccess success, Failure failure) const;
};
