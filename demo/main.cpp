// tarnel-demo: a host application that shows interstitial, rewarded and banner ads in real windows.
// It uses only the library's public API (and GLib's loop, which every GTK host runs), and is the
// example that the README points hosts to. tarnel-demo --help lists its options.
//
// Without --manifest-base it starts the bundled ad service on 127.0.0.1. It prints one line per
// delegate callback on stdout ("ready|failed|rewarded|closed <format> <zone>") and exits 0 once
// every requested ad has closed, 1 on a failure callback or when the time-out passes.

#include <unistd.h>

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "TNLDemoAdServer.h"
#include "TarnelAd/Gtk/TNLGtkToolkit.h"
#include "TarnelAd/TarnelAd.h"

namespace {

struct Options {
  std::vector<std::string> formats;
  std::string zone = "demo-zone";
  std::string appId = "tarnel-demo";
  std::optional<std::string> manifestBase;
  std::optional<std::string> markup;
  std::optional<std::filesystem::path> screenshotDir;
  int timeoutSeconds = 30;
  bool logs = false;
};

std::optional<std::string> optionalText(const gchar* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

// Parses the command line with GLib's option parser (--help lists the options); nullopt, after a
// message, when it is not understood.
std::optional<Options> parseOptions(int& argc, char**& argv) {
  Options options;
  // GLib allocates what it parses; these free it when they go out of scope.
  g_auto(GStrv) formats = nullptr;
  g_autofree gchar* zone = nullptr;
  g_autofree gchar* appId = nullptr;
  g_autofree gchar* manifestBase = nullptr;
  g_autofree gchar* markupFile = nullptr;
  g_autofree gchar* screenshotDir = nullptr;
  gboolean logs = FALSE;
  const GOptionEntry entries[] = {
      {"format", 'f', 0, G_OPTION_ARG_STRING_ARRAY, &formats,
       "Ad to show: interstitial, rewarded or banner; repeat for several (default: all three)",
       "FORMAT"},
      {"zone", 'z', 0, G_OPTION_ARG_STRING, &zone, "Zone to load (default: demo-zone)", "ZONE"},
      {"app-id", 0, 0, G_OPTION_ARG_STRING, &appId, "Application ID (default: tarnel-demo)", "ID"},
      {"manifest-base", 0, 0, G_OPTION_ARG_STRING, &manifestBase,
       "Use this ad service instead of the bundled one", "URL"},
      {"markup", 0, 0, G_OPTION_ARG_FILENAME, &markupFile,
       "Full-screen ad markup to show instead of requesting an ad", "FILE"},
      {"screenshot", 0, 0, G_OPTION_ARG_FILENAME, &screenshotDir,
       "Write a PNG of each ad while it is on screen into DIR", "DIR"},
      {"timeout", 't', 0, G_OPTION_ARG_INT, &options.timeoutSeconds,
       "Give up after SECONDS (default: 30)", "SECONDS"},
      {"logs", 0, 0, G_OPTION_ARG_NONE, &logs, "Switch on the library's diagnostic log", nullptr},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
  };
  g_autoptr(GOptionContext) context = g_option_context_new("- show TarnelAd ads in real windows");
  g_option_context_add_main_entries(context, entries, nullptr);
  g_option_context_set_description(
      context,
      "Without --manifest-base the bundled ad service runs on 127.0.0.1. One line per delegate\n"
      "callback goes to stdout; the exit status is 0 once every requested ad has closed.\n");
  g_autoptr(GError) error = nullptr;
  if (!g_option_context_parse(context, &argc, &argv, &error)) {
    std::cerr << "tarnel-demo: " << error->message << " (see --help)\n";
    return std::nullopt;
  }

  for (gchar** format = formats; format != nullptr && *format != nullptr; ++format) {
    options.formats.emplace_back(*format);
  }
  options.zone = optionalText(zone).value_or(options.zone);
  options.appId = optionalText(appId).value_or(options.appId);
  options.manifestBase = optionalText(manifestBase);
  if (screenshotDir != nullptr) {
    options.screenshotDir = screenshotDir;
  }
  options.logs = logs;
  const auto markupPath = optionalText(markupFile);

  for (const auto& format : options.formats) {
    if (format != "interstitial" && format != "rewarded" && format != "banner") {
      std::cerr << "tarnel-demo: unknown format " << format << " (see --help)\n";
      return std::nullopt;
    }
  }
  if (options.formats.empty()) {
    options.formats = {"interstitial", "rewarded", "banner"};
  }
  if (markupPath) {
    std::ifstream file(*markupPath, std::ios::binary);
    if (!file) {
      std::cerr << "tarnel-demo: cannot read " << *markupPath << "\n";
      return std::nullopt;
    }
    std::ostringstream text;
    text << file.rdbuf();
    options.markup = text.str();
  }
  return options;
}

// Without a display, runs this program again, with the same arguments, under a virtual one (Xvfb);
// returns only when that cannot be done.
void reexecUnderXvfbWithoutDisplay(const std::vector<std::string>& arguments) {
  const char* display = std::getenv("DISPLAY");
  if (display != nullptr && *display != '\0') {
    return;
  }
  std::vector<std::string> args = {"xvfb-run", "-a", "-s", "-screen 0 1280x1024x24"};
  // /proc/self/exe: argv[0] may be a bare name that xvfb-run would not find.
  args.push_back(std::filesystem::read_symlink("/proc/self/exe").string());
  args.insert(args.end(), arguments.begin(), arguments.end());
  std::vector<char*> raw;
  for (auto& a : args) {
    raw.push_back(a.data());
  }
  raw.push_back(nullptr);
  std::cerr << "tarnel-demo: no display; running under Xvfb\n";
  execvp("xvfb-run", raw.data());
  std::cerr << "tarnel-demo: no display and no xvfb-run (install the xvfb package)\n";
}

// Runs `task` on a later iteration of the main loop.
void onMainLoop(std::function<void()> task) {
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
      },
      new std::function<void()>(std::move(task)),
      [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

void afterSeconds(double seconds, std::function<void()> task) {
  g_timeout_add_full(
      G_PRIORITY_DEFAULT, static_cast<guint>(seconds * 1000),
      [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
      },
      new std::function<void()>(std::move(task)),
      [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

// The host's screen: the view controller ads are presented from, and the delegate of every format.
class DemoScreen : public TNLViewController,
                   public TNLInterstitialAdDelegate,
                   public TNLRewardedAdDelegate,
                   public TNLBannerAdDelegate {
 public:
  DemoScreen(Options options, GMainLoop* loop) : options_(std::move(options)), loop_(loop) {
    pending_.assign(options_.formats.begin(), options_.formats.end());
  }

  int exitCode() const { return exitCode_; }

  void viewDidLoad() override {
    view()->setBackgroundColor(TNLColor{0.93, 0.94, 0.96, 1.0});
    auto title = TNLLabel::create({24, 24, 600, 32});
    title->setText("TarnelAd demo host");
    view()->addSubview(title);
  }

  // Starts the next requested format, or ends the run when none is left.
  void next() {
    if (pending_.empty()) {
      finish(0);
      return;
    }
    const std::string format = pending_.front();
    if (format == "interstitial") {
      TNLInterstitialAd::loadInterstitialAdForZone(options_.zone, options_.markup);
    } else if (format == "rewarded") {
      TNLRewardedAd::loadRewardedAdForZone(options_.zone, options_.markup);
    } else {
      showBanner();
    }
  }

  void finish(int code) {
    exitCode_ = code;
    g_main_loop_quit(loop_);
  }

  // Every callback arrives on the main thread (TNLSetup::setCallbacksOnMainThread for the
  // full-screen ones), so the screen is used from there without locks or hops.
  void onInterstitialAdReadyForZone(const std::string& zone) override {
    ready("interstitial", zone);
  }
  void onInterstitialAdFailedForZone(const std::string& zone) override {
    failed("interstitial", zone);
  }
  void onInterstitialAdClosedForZone(const std::string& zone) override {
    closed("interstitial", zone);
  }
  void onRewardedAdReadyForZone(const std::string& zone) override { ready("rewarded", zone); }
  void onRewardedAdFailedForZone(const std::string& zone) override { failed("rewarded", zone); }
  void onRewardedAdClosedForZone(const std::string& zone) override { closed("rewarded", zone); }
  void onRewardedAdRewardedForZone(const std::string& zone) override {
    print("rewarded", "rewarded", zone);
  }

  void onBannerAdReadyForZone(const std::shared_ptr<TNLBannerAdView>&,
                              const std::string& zone) override {
    print("ready", "banner", zone);
    screenshotLater("banner");
  }
  void onBannerAdFailedForZone(const std::shared_ptr<TNLBannerAdView>&,
                               const std::string& zone) override {
    failed("banner", zone);
  }
  void onBannerAdClosedForZone(const std::shared_ptr<TNLBannerAdView>&,
                               const std::string& zone) override {
    closed("banner", zone);
    banner_.reset();
  }

 private:
  void print(const char* what, const std::string& format, const std::string& zone) {
    std::cout << what << ' ' << format << ' ' << zone << std::endl;
  }

  void ready(const std::string& format, const std::string& zone) {
    print("ready", format, zone);
    if (format == "interstitial") {
      TNLInterstitialAd::showInterstitialAdForZone(zone);
    } else {
      TNLRewardedAd::showRewardedAdForZone(zone);
    }
    screenshotLater(format);
  }

  void failed(const std::string& format, const std::string& zone) {
    print("failed", format, zone);
    finish(1);
  }

  void closed(const std::string& format, const std::string& zone) {
    print("closed", format, zone);
    // The library forgets the closed zone after this callback; the next load of the same zone
    // comes after that.
    onMainLoop([this, format] {
      if (!pending_.empty() && pending_.front() == format) {
        pending_.pop_front();
      }
      next();
    });
  }

  void showBanner() {
    banner_ = TNLBannerAdView::create(
        std::dynamic_pointer_cast<TNLBannerAdDelegate>(shared_from_this()), options_.appId,
        TNLBannerAdSizeStandard, std::dynamic_pointer_cast<TNLViewController>(shared_from_this()));
    view()->addSubview(banner_);
    // The banner sizes itself; the host places it at the bottom, centred.
    view()->addConstraints({TNLLayoutConstraint::constraintWithItem(
                                banner_, TNLLayoutAttribute::centerX, TNLLayoutRelation::equal,
                                view(), TNLLayoutAttribute::centerX, 1.0, 0.0),
                            TNLLayoutConstraint::constraintWithItem(
                                banner_, TNLLayoutAttribute::bottom, TNLLayoutRelation::equal,
                                view(), TNLLayoutAttribute::bottom, 1.0, -24.0)});
    view()->layoutIfNeeded();
    banner_->loadAdForZone(options_.zone);
  }

  // The creative has had time to load and draw by then; it plays for several seconds.
  void screenshotLater(const std::string& format) {
    if (!options_.screenshotDir) {
      return;
    }
    afterSeconds(1.5, [this, format] {
      const auto path = *options_.screenshotDir / (format + ".png");
      if (TNLGtkToolkit::writeScreenshot(path.string())) {
        std::cerr << "tarnel-demo: screenshot " << path.string() << "\n";
      } else {
        std::cerr << "tarnel-demo: could not write " << path.string() << "\n";
      }
    });
  }

  const Options options_;
  GMainLoop* const loop_;
  std::deque<std::string> pending_;
  std::shared_ptr<TNLBannerAdView> banner_;
  int exitCode_ = 1;
};

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto options = parseOptions(argc, argv);
  if (!options) {
    return 2;
  }
  reexecUnderXvfbWithoutDisplay(arguments);
  if (!TNLGtkToolkit::useGtkBackend()) {
    std::cerr << "tarnel-demo: cannot open the display\n";
    return 1;
  }
  if (options->screenshotDir) {
    std::filesystem::create_directories(*options->screenshotDir);
  }
  TNLInterstitialAd::showTNLLogs(options->logs);
  TNLSetup::setCallbacksOnMainThread(true);

  // What the library reports about this application (its requests and user agent carry it).
  TNLHostApplicationInfo application;
  application.bundleIdentifier = "com.tarnel.demo";
  application.displayName = "Tarnel Demo";
  application.shortVersion = "1.0";
  TNLSetup::setDeviceFacts(TNLDeviceFacts::linuxFacts(application));

  // The bundled ad service, unless the host was pointed at another one.
  std::unique_ptr<TNLDemoAdServer> server;
  if (options->manifestBase) {
    TNLSetup::setManifestBaseURL(*options->manifestBase);
  } else {
    server = std::make_unique<TNLDemoAdServer>(options->appId, [](const std::string& event,
                                                                  const std::string& query) {
      // VAST pixels name their event and the video's
      // playhead in the query.
      std::cerr << "ad service: event " << event << (event == "VAST" ? " " + query : "") << "\n";
    });
    TNLSetup::setManifestBaseURL(server->baseURL());
    std::cerr << "tarnel-demo: bundled ad service at " << server->baseURL() << "\n";
  }

  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  auto screen = std::make_shared<DemoScreen>(*options, loop);

  // A window as wide as the screen's short side, so that a banner (as wide as that side) fits.
  const TNLRect bounds = TNLScreen::mainScreen()->bounds();
  const double width = std::min(bounds.size.width, bounds.size.height);
  auto window = TNLWindow::create({0, 0, width, width * 0.75});
  window->setRootViewController(screen);
  window->makeKeyAndVisible();

  TNLInterstitialAd::setInterstitialAdDelegate(screen, options->appId);
  TNLRewardedAd::setRewardedAdDelegate(screen, options->appId);

  afterSeconds(options->timeoutSeconds, [&] {
    std::cerr << "tarnel-demo: timed out after " << options->timeoutSeconds << " s\n";
    screen->finish(1);
  });
  onMainLoop([&] { screen->next(); });
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  // The last trackers (the close of the last ad among them) reach the monitoring server before
  // the bundled service stops.
  TNLSetup::shutdown();
  return screen->exitCode();
}
