#pragma once

/// @file
/// @brief Exported string constants: JSON keys (_KEY), macro tokens (_MACRO, _BLANKMACRO), tracker
/// event names (_TRACKER), statements sent into the creative (_CMD) and bridge actions (_ACT).
/// They are protocol values shared with ad servers and creatives.

#include <cstddef>
#include <string>

#include "TarnelAd/TNLExport.h"

/// The HTTP methods of the library's requests.
///@{
inline constexpr char GET_METHOD[] = "GET";
inline constexpr char POST_METHOD[] = "POST";
///@}

/// The manifest endpoint's format: the base URL (a build option, replaceable by the host through
/// TNLSetup::setManifestBaseURL) followed by "/v4/manifest/%@", where %@ is the application ID.
TNL_EXPORT std::string TNL_MANIFESTURL();
/// The manifest endpoint's path; %@ is the application ID.
inline constexpr char TNL_MANIFESTPATH[] = "/v4/manifest/%@";

/// Keys of the manifest's JSON object.
///@{
inline constexpr char TNL_TTL_KEY[] = "ttl";
inline constexpr char TNL_DEVELOPER_KEY[] = "developer";
inline constexpr char TNL_PUBLISHERID_KEY[] = "publisherid";
inline constexpr char TNL_APPLICATIONID_KEY[] = "applicationid";
inline constexpr char TNL_APPLICATIONNAME_KEY[] = "applicationname";
inline constexpr char TNL_ACTIVE_KEY[] = "active";
inline constexpr char TNL_PRIVACY_KEY[] = "privacy";
inline constexpr char TNL_COPPA_KEY[] = "coppa";
inline constexpr char TNL_GDPR_KEY[] = "gdpr";
inline constexpr char TNL_VIEWABILITY_KEY[] = "viewability";
inline constexpr char TNL_INCLUDED_KEY[] = "included";
inline constexpr char TNL_MONITORING_KEY[] = "monitoring";
inline constexpr char TNL_PERFORMANCE_KEY[] = "performance";
inline constexpr char TNL_LOGLEVEL_KEY[] = "loglevel";
inline constexpr char TNL_METHOD_KEY[] = "method";
inline constexpr char TNL_BASEURI_KEY[] = "baseuri";
inline constexpr char TNL_URICONTENT_KEY[] = "uri_content";
inline constexpr char TNL_DEMANDSOURCES_KEY[] = "demandsources";
inline constexpr char TNL_WORKFLOW_KEY[] = "workflow";
inline constexpr char TNL_DEMANDSOURCE_KEY[] = "demandsource";
inline constexpr char TNL_SOURCE_KEY[] = "source";
inline constexpr char TNL_RANK_KEY[] = "rank";
inline constexpr char TNL_TIMEOUT_KEY[] = "timeout";
inline constexpr char TNL_AUTOFETCH_KEY[] = "autofetch";
inline constexpr char TNL_URL_KEY[] = "url";
inline constexpr char TNL_VAST_TEMPLATE_KEY[] = "vast_template_uri";
///@}

/// Keys of the manifest request's body.
///@{
inline constexpr char TNL_VERSION_KEY[] = "version";
inline constexpr char TNL_SDK_KEY[] = "sdk";
inline constexpr char TNL_DEVICEINFO_KEY[] = "device_info";
///@}

/// Keys of an ad record, and the SDK name it is given.
///@{
inline constexpr char TNL_SDKTYPE_KEY[] = "sdkType";
inline constexpr char TNL_ADCREATIVETAG_KEY[] = "creative_tag";
inline constexpr char TNL_ADASSETS_KEY[] = "assets";
inline constexpr char TNL_ADCOPY_KEY[] = "copy";
inline constexpr char TNL_ADFLAGS_KEY[] = "flags";
inline constexpr char TNL_ADTRACKERS_KEY[] = "trackers";
inline constexpr char TNL_ADPAYLOAD_KEY[] = "payload";
inline constexpr char TNL_SDKSRC_KEY[] = "sdkIosSrc";
inline constexpr char TNL_SDKVARS_KEY[] = "sdkVars";
inline constexpr char TNL_SDKNAME_KEY[] = "sdkName";
inline constexpr char TNL_SDKNAME[] = "Tarnel-1.0";
inline constexpr char TNL_BRANDNAME_KEY[] = "brandName";
///@}

/// Macro tokens that the library fills in URLs (those ending in BLANKMACRO stay empty).
///@{
inline constexpr char TNL_SESSIONID_MACRO[] = "%SESSION_ID%";
inline constexpr char TNL_PACKAGEID_MACRO[] = "%PACKAGE_ID%";
inline constexpr char TNL_APPNAME_MACRO[] = "%APP_NAME%";
inline constexpr char TNL_APPVERSION_MACRO[] = "%APP_VERSION%";
inline constexpr char TNL_APPDOMAIN_MACRO[] = "%APP_DOMAIN%";
inline constexpr char TNL_PROPERTY_MACRO[] = "%PROPERTY%";
inline constexpr char TNL_DEVICEID_MACRO[] = "%DEVICE_ID%";
inline constexpr char TNL_IOSDEVICEID_MACRO[] = "%IOS_DEVICE_ID%";
inline constexpr char TNL_ANDROIDDEVICEID_MACRO[] = "%ANDROID_DEVICE_ID%";
inline constexpr char TNL_ADVERTISERID_MACRO[] = "%ADVER%";
inline constexpr char TNL_DONOTTRACK_MACRO[] = "%TRACK_FLAG%";
inline constexpr char TNL_COPPA_MACRO[] = "%COPPA%";
inline constexpr char TNL_DEVICENAME_MACRO[] = "%DEVICE_NAME%";
inline constexpr char TNL_EXTERNALIP_MACRO[] = "%EXTERNAL_IP%";
inline constexpr char TNL_CONNECTIONTYPE_MACRO[] = "%CONN_TYPE%";
inline constexpr char TNL_CARRIER_MACRO[] = "%CARRIER%";
inline constexpr char TNL_OS_MACRO[] = "%OS%";
inline constexpr char TNL_OSVERSION_MACRO[] = "%OS_VERSION%";
inline constexpr char TNL_MANUFACTURER_MACRO[] = "%MANU%";
inline constexpr char TNL_MODEL_MACRO[] = "%MODEL%";
inline constexpr char TNL_SDKVERSION_MACRO[] = "%SDK_VERSION%";
inline constexpr char TNL_SDKBUILDVERSION_MACRO[] = "%SDK_BUILD_VERSION%";
inline constexpr char TNL_LANGUAGE_MACRO[] = "%LANG%";
inline constexpr char TNL_LATITUDE_MACRO[] = "%LAT%";
inline constexpr char TNL_LONGITUDE_MACRO[] = "%LONG%";
inline constexpr char TNL_CONTINENT_MACRO[] = "%Continent.Name%";
inline constexpr char TNL_CONTINENTISOCODE_MACRO[] = "%Continent.IsoCode%";
inline constexpr char TNL_TIMEZONE_MACRO[] = "%TIME_ZONE%";
inline constexpr char TNL_IP_MACRO[] = "%IP%";
inline constexpr char TNL_INTERNALIP_MACRO[] = "%INTERNAL_IP%";
inline constexpr char TNL_SCREENWIDTH_MACRO[] = "%SCREEN_WIDTH%";
inline constexpr char TNL_SCREENHEIGHT_MACRO[] = "%SCREEN_HEIGHT%";
inline constexpr char TNL_DEVICERESOLUTION_MACRO[] = "%DEVICE_RES%";
inline constexpr char TNL_USERAGENT_MACRO[] = "%USER_AGENT%";
inline constexpr char TNL_TRACKERTYPE_MACRO[] = "%TRACKER_TYPE%";
inline constexpr char TNL_EVENTNAME_MACRO[] = "%EVENT_NAME%";
inline constexpr char TNL_CONTENTTYPE_MACRO[] = "%CONTENT_TYPE%";
inline constexpr char TNL_WORKFLOW_MACRO[] = "%WORKFLOW%";
inline constexpr char TNL_ZONE_MACRO[] = "%ZONE%";
inline constexpr char TNL_PRODUCT_MACRO[] = "%PRODUCT%";
inline constexpr char TNL_CREATIVEID_MACRO[] = "%CRID%";
inline constexpr char TNL_ORDERID_MACRO[] = "%ORDID%";
inline constexpr char TNL_LINEITEMID_MACRO[] = "%LINE_ITEM_ID%";
inline constexpr char TNL_ADSVRADID_BLANKMACRO[] = "%ADVERTISER_ID%";
inline constexpr char TNL_VIDEODURATION_BLANKMACRO[] = "%VIDEO_DURATION%";
inline constexpr char TNL_HOST_BLANKMACRO[] = "%DFP_URL%";
inline constexpr char TNL_PLATFORM_BLANKMACRO[] = "%PLATFORM%";
inline constexpr char TNL_VALUE_BLANKMACRO[] = "%VALUE%";
inline constexpr char TNL_RAND_MACRO[] = "%RAND%";
inline constexpr char TNL_TIMESTAMP_MACRO[] = "%TIME_STAMP%";
inline constexpr char TNL_DEVICEORIENTATION_MACRO[] = "%DEVICE_ORI%";
inline constexpr char TNL_APPID_MACRO[] = "%APP_ID%";
inline constexpr char TNL_ADSIZE_MACRO[] = "%AD_SIZE%";
///@}

/// Names of the lifecycle events sent to the monitoring endpoint.
///@{
inline constexpr char TNL_MANIFESTLOADED_TRACKER[] = "OnManifestLoaded";
inline constexpr char TNL_ADREQUESTED_TRACKER[] = "OnAdRequested";
inline constexpr char TNL_ADRETURNED_TRACKER[] = "OnAdReturned";
inline constexpr char TNL_ADUNAVAILABLE_TRACKER[] = "OnAdUnavailable";
inline constexpr char TNL_ADREADY_TRACKER[] = "OnAdReady";
inline constexpr char TNL_ADSHOWING_TRACKER[] = "OnAdShowing";
inline constexpr char TNL_ADCLOSED_TRACKER[] = "OnAdClosed";
inline constexpr char TNL_ADREWARDED_TRACKER[] = "OnAdRewarded";
///@}

/// The creative bridge: the scheme and the actions a creative sends to the library.
///@{
inline constexpr char TNL_BRIDGE_CALLOUT[] = "bridge://";
inline constexpr char TNL_BRIDGE_VIBRATE_ACT[] = "vibrate";
inline constexpr char TNL_BRIDGE_CLOSE_ACT[] = "close";
inline constexpr char TNL_BRIDGE_OPTIN_ACT[] = "optin?";
inline constexpr char TNL_BRIDGE_OPEN_URL_ACT[] = "open?url=";
inline constexpr char TNL_BRIDGE_EXPAND_PIXELS_ACT[] = "expand=";
inline constexpr char TNL_BRIDGE_EXPAND_PERCENT_ACT[] = "expandPercent=";
inline constexpr char TNL_BRIDGE_COLLAPSE_ACT[] = "collapse";
inline constexpr char TNL_BRIDGE_ENABLE_REDIRECT_ACT[] = "enableRedirect";
inline constexpr char TNL_BRIDGE_REWARD_ACT[] = "reward";
inline constexpr char TNL_BRIDGE_DEVICEDATA_ACT[] = "deviceData";
inline constexpr char TNL_BRIDGE_ALLOW_SCROLL_ACT[] = "allowScrolling=";
inline constexpr char TNL_TOUCH[] = "touch=";
inline constexpr char TNL_BRIDGE_LOCAL_MARKER[] = "&local";
inline constexpr char TNL_DISPLAY_OPTIN[] = "display";
inline constexpr char TNL_VIDEO_OPTIN[] = "video";
///@}

/// The creative bridge: statements the library runs in the creative.
///@{
inline constexpr char TNL_BRIDGE_RECIEVEPAYLOAD_CMD[] = "receivePayload(%@)";
inline constexpr char TNL_BRIDGE_VOLUME_CMD[] = "ZENKO.setVolume(%f)";
inline constexpr char TNL_BRIDGE_SCROLL_INIT_CMD[] = "ZENKO.isScrollListenerSubscribed(true)";
inline constexpr char TNL_BRIDGE_SCROLL_CMD[] = "ZENKO.scroll(%@)";
inline constexpr char TNL_BRIDGE_DEVICEDATA_CMD[] = "ZENKO.onDeviceData(%@)";
inline constexpr char TNL_BRIDGE_FOREGROUND_CMD[] = "ZENKO.isAdVisible(true)";
inline constexpr char TNL_BRIDGE_BACKGROUND_CMD[] = "ZENKO.isAdVisible(false)";
inline constexpr char TNL_BRIDGE_VISIBILITY_CMD[] = "ZENKO.isAdVisible(%@)";
inline constexpr char TNL_BRIDGE_EXPANDED_CMD[] = "ZENKO.onWebViewExpanded(%f)";
inline constexpr char TNL_BRIDGE_COLLAPSED_CMD[] = "ZENKO.onWebViewCollapsed()";
inline constexpr char TNL_BRIDGE_ORICHANGE_CMD[] = "ZENKO.orientationDidChange(%@)";
inline constexpr char TNL_PORTRAITORI[] = "portrait";
inline constexpr char TNL_LANDSCAPEORI[] = "landscape";
///@}

/// The greatest number of VAST wrappers that are followed.
inline constexpr std::ptrdiff_t maxVASTRedirects = 5;
/// The prefix under which XPath queries reach a document's default namespace.
inline constexpr char kTNLXMLXPathDefaultNamespacePrefix[] = "_def_ns";
/// The error domain of the XML layer's errors.
inline constexpr char TNL_XMLErrorDomain[] = "TNL_XMLErrorDomain";

/// The notification the library posts when the network's reachability changes.
inline constexpr char kReachabilityChangedNotification[] =
    "kNetworkReachabilityChangedNotification";
