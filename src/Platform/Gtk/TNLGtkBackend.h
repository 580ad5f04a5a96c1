#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <map>
#include <memory>

#include "Platform/Gtk/TNLGObjectRef.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"

class TNLGtkWindowPeer;

// The GTK backend: peers that render into GTK widgets (TNLGtkViewBox and its kinds), web views in
// WebKitGTK (TNLGtkWebEngine), presentation as covering windows, the screen from the monitor and
// the application state from the windows. Main thread only.
//
// Web views share one ephemeral web context (no cookies or cache kept across runs) with the
// "bridge" URL scheme registered, so that bridge URLs never reach the network; its web processes
// run without WebKit's sandbox, which needs user namespaces that containers running as root
// lack. Rendering keeps WebKit's defaults, which work without a GPU.
class TNLGtkBackend : public TNLToolkitBackend {
 public:
  // The backend, made on first call; GTK must be initialised.
  static std::shared_ptr<TNLGtkBackend> shared();

  TNLGtkBackend();
  ~TNLGtkBackend() override;

  std::string name() const override { return "gtk"; }
  TNLRect mainScreenBounds() const override;
  double mainScreenScale() const override;

  std::shared_ptr<TNLViewPeer> createViewPeer(const std::shared_ptr<TNLView>& view) override;
  std::shared_ptr<TNLViewPeer> createScrollViewPeer(
      const std::shared_ptr<TNLScrollView>& scrollView) override;
  std::shared_ptr<TNLViewPeer> createLabelPeer(const std::shared_ptr<TNLLabel>& label) override;
  std::shared_ptr<TNLViewPeer> createButtonPeer(const std::shared_ptr<TNLButton>& button) override;
  std::shared_ptr<TNLViewPeer> createWindowPeer(const std::shared_ptr<TNLWindow>& window) override;
  std::shared_ptr<TNLWebEnginePeer> createWebEngine(
      const std::shared_ptr<TNLWebView>& webView) override;

  void presentViewController(const std::shared_ptr<TNLViewController>& presenting,
                             const std::shared_ptr<TNLViewController>& presented, bool animated,
                             std::function<void()> finished) override;
  void dismissViewController(const std::shared_ptr<TNLViewController>& presenting,
                             const std::shared_ptr<TNLViewController>& presented, bool animated,
                             std::function<void()> finished) override;

  // The toolkit window of a host's GtkWindow, made on first call.
  std::shared_ptr<TNLWindow> windowFor(GtkWindow* window);
  // The window peer of a model window, if it has a GTK one.
  static std::shared_ptr<TNLGtkWindowPeer> windowPeerOf(const std::shared_ptr<TNLWindow>& window);

  WebKitWebContext* webContext() const { return context_.get(); }

  // Sets the application's orientations from the screen and the key window.
  static void updateOrientations();

 private:
  static void monitorsChanged(GdkScreen* screen, gpointer self);

  TNLGObjectRef<WebKitWebContext> context_;
  // The host window that the next window peer wraps (set while windowFor makes one).
  GtkWindow* wrapping_ = nullptr;
  std::map<GtkWindow*, std::weak_ptr<TNLWindow>> wrapped_;
  TNLSignalConnection monitorsConnection_;
  TNLSignalConnection screenSizeConnection_;
};
