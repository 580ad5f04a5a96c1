#include "TNLDemoCreatives.h"

namespace {

// The creative side of the bridge, shared by every page: the ZENKO object that receives the
// library's statements, and the way back (a main-frame navigation to bridge://).
constexpr char kBridgeScript[] = R"JS(
  window.ZENKO = {
    visible: false,
    isAdVisible: function (visible) { ZENKO.visible = visible; status('visible: ' + visible); },
    setVolume: function (volume) { status('volume ' + volume.toFixed(2)); },
    onDeviceData: function () {}, scroll: function () {}, isScrollListenerSubscribed: function () {},
    orientationDidChange: function () {}, onWebViewExpanded: function () {},
    onWebViewCollapsed: function () {}
  };
  function status(text) { var s = document.getElementById('status'); if (s) s.textContent = text; }
  function bridge(action) { window.location.href = 'bridge://' + action; }
  // Plays for `seconds`, counting down on screen, then runs `done`.
  function play(seconds, done) {
    var left = seconds, bar = document.getElementById('progress');
    var tick = setInterval(function () {
      left -= 0.1;
      if (bar) bar.style.width = Math.max(0, 100 * (1 - left / seconds)) + '%';
      var c = document.getElementById('countdown');
      if (c) c.textContent = Math.max(0, Math.ceil(left));
      if (left <= 0) { clearInterval(tick); done(); }
    }, 100);
  }
)JS";

constexpr char kStyle[] = R"CSS(
  html, body { margin: 0; height: 100%; font-family: sans-serif; color: #fff; overflow: hidden; }
  .fill { position: absolute; inset: 0; display: flex; flex-direction: column;
          align-items: center; justify-content: center; text-align: center; }
  h1 { font-size: 34px; margin: 0 0 12px; } p { margin: 6px; font-size: 18px; }
  .track { width: 60%; height: 8px; background: rgba(255,255,255,.3); border-radius: 4px; margin-top: 18px; }
  #progress { width: 0; height: 100%; background: #fff; border-radius: 4px; }
  #status { position: absolute; bottom: 10px; left: 0; right: 0; font-size: 12px; opacity: .7; }
)CSS";

std::string page(const std::string& style, const std::string& body, const std::string& script) {
  return "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\">"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"><style>" +
         std::string(kStyle) + style + "</style></head><body>" + body + "<script>" + kBridgeScript +
         script + "</script></body></html>\n";
}

}  // namespace

namespace TNLDemoCreatives {

std::string interstitialPage() {
  return page("body { background: linear-gradient(135deg, #2b5876, #4e4376); }",
              R"(<div class="fill"><h1 id="brand">Interstitial</h1><p id="headline"></p>
                 <p>Closes in <span id="countdown">4</span> s</p>
                 <div class="track"><div id="progress"></div></div></div><div id="status"></div>)",
              R"JS(
  window.receivePayload = function (ad) {
    document.getElementById('brand').textContent = (ad.copy && ad.copy.brandName) || 'Tarnel';
    document.getElementById('headline').textContent = (ad.copy && ad.copy.headline) || '';
    play(4, function () { bridge('close'); });
  };
)JS");
}

std::string vastTemplatePage() {
  return page(R"(body { background: #111; }
                 .screen { position: relative; width: 80%; height: 45%; }
                 video { width: 100%; height: 100%; background: #000; border-radius: 6px; }
                 #caption { position: absolute; inset: 0; display: flex; align-items: center;
                            justify-content: center; font-size: 20px; opacity: .8; })",
              R"(<div class="fill" data-zone="^#zone#^" data-site="^#site#^">
                 <h1 id="title">Video ad</h1><div class="screen">
                 <video id="video" src="^#video#^" muted playsinline></video>
                 <div id="caption">&#9654; loading the clip</div></div>
                 <p>Reward in <span id="countdown">4</span> s</p>
                 <div class="track"><div id="progress"></div></div></div><div id="status"></div>
                 <script type="application/xml" id="vast">^#xml_doc#^</script>)",
              R"JS(
  window.receivePayload = function () {
    var vast = new DOMParser().parseFromString(document.getElementById('vast').textContent, 'application/xml');
    var title = vast.getElementsByTagName('AdTitle')[0];
    if (title) document.getElementById('title').textContent = title.textContent.trim();
    var video = document.getElementById('video'), caption = document.getElementById('caption');
    var fired = {}, finished = false;
    // The video's position as VAST writes it: HH:MM:SS.mmm.
    function playhead() {
      var ms = Math.round(video.currentTime * 1000), s = Math.floor(ms / 1000);
      function two(n) { return (n < 10 ? '0' : '') + n; }
      return two(Math.floor(s / 3600)) + ':' + two(Math.floor(s / 60) % 60) + ':' + two(s % 60) +
             '.' + ('00' + ms % 1000).slice(-3);
    }
    // Requests, once, the URL of every element `tag` of the document (with the attribute event,
    // when one is given), its macros filled in by `fill`.
    function ping(tag, event, fill) {
      if (fired[tag + event]) return;
      fired[tag + event] = true;
      Array.prototype.forEach.call(vast.getElementsByTagName(tag), function (element) {
        if (!event || element.getAttribute('event') === event) new Image().src = fill(element.textContent.trim());
      });
    }
    function track(event) {
      ping('Tracking', event, function (url) {
        return url.replace('[CONTENTPLAYHEAD]', encodeURIComponent(playhead()));
      });
    }
    function finish() {
      if (finished) return;
      finished = true;
      bridge('reward');
      setTimeout(function () { bridge('close'); }, 400);
    }
    // No decoder, no data: VAST error 405 (the file cannot be played), and the ad runs its course.
    function cannotPlay() {
      if (fired.Trackingstart || fired.Error || finished) return;
      caption.textContent = 'The clip cannot play here';
      ping('Error', '', function (url) { return url.replace('[ERRORCODE]', '405'); });
      play(4, finish);
    }
    video.addEventListener('playing', function () {
      caption.style.display = 'none';
      ping('Impression', '', function (url) { return url; });
      track('start');
    });
    video.addEventListener('timeupdate', function () {
      if (!video.duration) return;
      var part = video.currentTime / video.duration;
      document.getElementById('progress').style.width = 100 * part + '%';
      document.getElementById('countdown').textContent = Math.ceil(video.duration - video.currentTime);
      if (part >= 0.25) track('firstQuartile');
      if (part >= 0.5) track('midpoint');
      if (part >= 0.75) track('thirdQuartile');
    });
    video.addEventListener('ended', function () { track('complete'); finish(); });
    video.addEventListener('error', cannotPlay);
    // Started here rather than by autoplay, so that no event comes before its listener.
    video.play().catch(cannotPlay);
    setTimeout(cannotPlay, 10000);
  };
)JS");
}

std::string bannerPage() {
  return page(R"(body { background: linear-gradient(90deg, #ff7e5f, #feb47b); }
                 .fill { flex-direction: row; gap: 12px; } h1 { font-size: 20px; margin: 0; }
                 p { font-size: 14px; })",
              R"(<div class="fill"><h1 id="brand">Banner</h1><p id="headline"></p>
                 <p>(<span id="countdown">5</span>)</p></div>)",
              R"JS(
  window.receivePayload = function (ad) {
    document.getElementById('brand').textContent = (ad.copy && ad.copy.brandName) || 'Tarnel';
    document.getElementById('headline').textContent = (ad.copy && ad.copy.headline) || '';
    play(5, function () { bridge('close'); });
  };
)JS");
}

}  // namespace TNLDemoCreatives
