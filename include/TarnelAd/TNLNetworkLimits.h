#pragma once

/// @file
/// @brief TNLNetworkLimits: the bounds on the library's HTTP requests.

#include <chrono>
#include <cstddef>

/// Bounds on every HTTP request the library makes itself: the manifest, ad responses, VAST
/// documents and their wrapper targets, creative pages, trackers and verification resources.
/// Whatever an ad server sends, a request that passes one of them ends with a transport error
/// (the load then asks the next demand source) and one line in the library's log.
/// Video files are fetched by the web engine and are not bound by these.
struct TNLNetworkLimits {
  /// Largest response body, counted after decompression while it arrives (error -1103).
  std::size_t maxResponseBytes = 4 * 1024 * 1024;
  /// Longest wait for the connection to be made (error -1001).
  std::chrono::milliseconds connectTimeout = std::chrono::seconds(10);
  /// Longest time without a single byte arriving or leaving (error -1001).
  std::chrono::milliseconds stallTimeout = std::chrono::seconds(10);
  /// Longest time for a whole request, from the moment it is started (waiting for a free
  /// connection included) to its last byte (error -1001).
  std::chrono::milliseconds totalTimeout = std::chrono::seconds(30);
  /// Redirects followed per request (error -1007 beyond).
  long maxRedirects = 10;
  /// Connections open at once to one host; further requests wait for a free one.
  long maxConnectionsPerHost = 6;
  /// How long shutting down (TNLSetup::shutdown, or the process returning from main) waits for
  /// trackers still in flight.
  std::chrono::milliseconds shutdownWait = std::chrono::seconds(2);
};
