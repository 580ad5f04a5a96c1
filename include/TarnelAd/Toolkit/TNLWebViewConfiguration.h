#pragma once

/// @file
/// @brief TNLWebViewConfiguration: how a web view's engine is set up.

/// Media types whose playback must be started by a user action (a bit set).
enum class TNLAudiovisualMediaTypes : unsigned {
  none = 0,
  audio = 1,
  video = 2,
  all = 3,
};

/// How a web view's engine is set up; fixed when the web view is made. Defaults are the
/// platform's.
struct TNLWebViewConfiguration {
  /// Whether pages run scripts.
  bool javaScriptEnabled = true;
  /// The media that only play after a user action; TNLAudiovisualMediaTypes::none lets pages
  /// start any media themselves.
  TNLAudiovisualMediaTypes mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::all;
  /// Whether videos play inside the page rather than full screen.
  bool allowsInlineMediaPlayback = false;

  /// Equal when every setting is.
  bool operator==(const TNLWebViewConfiguration&) const = default;
};
