#include "Ads/TNLBridge.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

#include "Platform/Audio/TNLSystemSound.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

using TNLStrings::contains;
using TNLStrings::replaceAll;

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

// The longest decimal number at the start of `text` (after blanks), as the platform reads a
// number prefix: sign, digits, point, digits, exponent. 0 when there is none.
float decimalPrefix(const std::string& text) {
  const auto isDigit = [&](size_t at) {
    return at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]));
  };
  size_t i = 0;
  while (i < text.size() && isBlank(text[i])) {
    ++i;
  }
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  const size_t start = i;
  size_t digits = 0;
  for (; isDigit(i); ++i) {
    ++digits;
  }
  if (i < text.size() && text[i] == '.') {
    for (++i; isDigit(i); ++i) {
      ++digits;
    }
  }
  if (digits == 0) {
    return 0.0f;
  }
  // An exponent counts only when digits follow it.
  bool negativeExponent = false;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    size_t j = i + 1;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) {
      negativeExponent = text[j] == '-';
      ++j;
    }
    if (isDigit(j)) {
      for (i = j; isDigit(i); ++i) {
      }
    } else {
      negativeExponent = false;
    }
  }
  double number = 0.0;
  if (std::from_chars(text.data() + start, text.data() + i, number).ec ==
      std::errc::result_out_of_range) {
    number = negativeExponent ? 0.0 : HUGE_VAL;
  }
  // Numbers beyond a float's range saturate rather than fail.
  const float value = number > std::numeric_limits<float>::max()
                          ? std::numeric_limits<float>::infinity()
                          : static_cast<float>(number);
  return negative ? -value : value;
}

}  // namespace

std::optional<std::string> TNLBridge::actionForURL(const std::string& url) {
  std::string action = replaceAll(url, TNL_BRIDGE_CALLOUT, "");
  if (!contains(action, TNL_BRIDGE_OPEN_URL_ACT)) {
    return action;
  }
  std::string decoded;
  if (!TNLStrings::percentDecode(action, decoded)) {
    return std::nullopt;
  }
  return decoded;
}

void TNLBridge::respondToBridgeAction(const std::optional<std::string>& action) {
  try {
    // An open action whose decoding failed matches nothing.
    if (!action) {
      return;
    }
    const std::string& text = *action;
    if (contains(text, TNL_BRIDGE_VIBRATE_ACT)) {
      TNLSystemSound::play(TNLSystemSound::kVibrate);
    } else if (contains(text, TNL_BRIDGE_CLOSE_ACT)) {
      fireCloseMethod();
    } else if (contains(text, TNL_BRIDGE_OPTIN_ACT)) {
      handleOptin(replaceAll(text, TNL_BRIDGE_OPTIN_ACT, ""));
    } else if (contains(text, TNL_BRIDGE_OPEN_URL_ACT)) {
      const std::string rest = replaceAll(text, TNL_BRIDGE_OPEN_URL_ACT, "");
      // The creative's own marker and everything after it are not part of the address.
      fireOpenUrlMethodWithUrl(TNLStrings::split(rest, TNL_BRIDGE_LOCAL_MARKER).front());
    } else if (contains(text, TNL_BRIDGE_EXPAND_PIXELS_ACT)) {
      const std::string rest = replaceAll(text, TNL_BRIDGE_EXPAND_PIXELS_ACT, "");
      fireExpandPixelsMethodWithPixels(getValueFromExpandAction(rest),
                                       getTouchFromExpandAction(rest));
    } else if (contains(text, TNL_BRIDGE_EXPAND_PERCENT_ACT)) {
      const std::string rest = replaceAll(text, TNL_BRIDGE_EXPAND_PERCENT_ACT, "");
      fireExpandPercentMethodWithPercent(getValueFromExpandAction(rest),
                                         getTouchFromExpandAction(rest));
    } else if (contains(text, TNL_BRIDGE_COLLAPSE_ACT)) {
      fireCollapseMethod();
    } else if (contains(text, TNL_BRIDGE_ENABLE_REDIRECT_ACT)) {
      fireEnableRedirectMethod();
    } else if (contains(text, TNL_BRIDGE_REWARD_ACT)) {
      fireRewardMethod();
    } else if (contains(text, TNL_BRIDGE_DEVICEDATA_ACT)) {
      fireDeviceDataMethod();
    } else if (contains(text, TNL_BRIDGE_ALLOW_SCROLL_ACT)) {
      getAllowScrollAndFireMethodForAction(text);
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Responding to ad bridge action failed due to exception: %@",
                                error);
  }
}

void TNLBridge::open() {
  if (const auto delegate = this->delegate()) {
    delegate->bridgeOpened(*this);
  }
}

float TNLBridge::getValueFromExpandAction(const std::string& action) {
  const auto pieces = TNLStrings::split(action, "&");
  return pieces.empty() ? 0.0f : decimalPrefix(pieces.front());
}

bool TNLBridge::getTouchFromExpandAction(const std::string& action) {
  const auto pieces = TNLStrings::split(action, "&");
  return pieces.size() >= 2 && replaceAll(pieces[1], TNL_TOUCH, "") == "true";
}

void TNLBridge::getAllowScrollAndFireMethodForAction(const std::string& action) {
  fireAllowScrollMethodWithAllow(replaceAll(action, TNL_BRIDGE_ALLOW_SCROLL_ACT, "") == "true");
}

void TNLBridge::handleOptin(const std::string& optin) {
  const auto delegate = this->delegate();
  if (optin == TNL_DISPLAY_OPTIN) {
    if (delegate) {
      delegate->displayOptinSentByBridge(*this);
    }
  } else if (optin == TNL_VIDEO_OPTIN) {
    if (delegate) {
      delegate->videoOptinSentByBridge(*this);
    }
  } else {
    TNLPlatformLog(TNLFormat("UNRECOGNIZED OPTIN: %@", optin));
  }
}

void TNLBridge::fireCloseMethod() {
  if (const auto delegate = this->delegate()) {
    delegate->closeActionSentByBridge(*this);
  }
}

void TNLBridge::fireOpenUrlMethodWithUrl(const std::string& url) {
  if (const auto delegate = this->delegate()) {
    delegate->openUrl(url, *this);
  }
}

void TNLBridge::fireExpandPixelsMethodWithPixels(float pixels, bool touch) {
  if (const auto delegate = this->delegate()) {
    delegate->expandPixels(pixels, touch, *this);
  }
}

void TNLBridge::fireExpandPercentMethodWithPercent(float percent, bool touch) {
  if (const auto delegate = this->delegate()) {
    delegate->expandPercent(percent, touch, *this);
  }
}

void TNLBridge::fireCollapseMethod() {
  if (const auto delegate = this->delegate()) {
    delegate->collapseActionSentByBridge(*this);
  }
}

void TNLBridge::fireEnableRedirectMethod() {
  if (const auto delegate = this->delegate()) {
    delegate->enableRedirectActionSentByBridge(*this);
  }
}

void TNLBridge::fireRewardMethod() {
  if (const auto delegate = this->delegate()) {
    delegate->rewardActionSentByBridge(*this);
  }
}

void TNLBridge::fireDeviceDataMethod() {
  if (const auto delegate = this->delegate()) {
    delegate->deviceDataRequestSentByBridge(*this);
  }
}

void TNLBridge::fireAllowScrollMethodWithAllow(bool allow) {
  if (const auto delegate = this->delegate()) {
    delegate->allowScroll(allow, *this);
  }
}
