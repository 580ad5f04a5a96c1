#pragma once

// Media types whose playback must be started by a user action (a bit set).
enum class TNLAudiovisualMediaTypes : unsigned {
  none = 0,
  audio = 1,
  video = 2,
  all = 3,
};

// How a web view's engine is set up; fixed when the web view is made. Defaults are the
// platform's.
struct TNLWebViewConfiguration {
  bool javaScriptEnabled = true;
  TNLAudiovisualMediaTypes mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::all;
  bool allowsInlineMediaPlayback = false;

  bool operator==(const TNLWebViewConfiguration&) const = default;
};
