#!/usr/bin/env bash
# Fails when code above src/Platform/ (or a public header) includes GTK, WebKit, JavaScriptCore,
# curl or GLib headers.
set -u
root=${1:-.}
hits=$(grep -rnE '#\s*include\s*[<"](gtk/|gdk/|webkit2?/|webkitgtk|curl/|glib|gio/|gobject/|jsc/|JavaScriptCore/)' \
  "$root/src" "$root/include" 2>/dev/null | grep -v "^$root/src/Platform/" | grep -v "^$root/include/TarnelAd/Gtk/")
if [ -n "$hits" ]; then
  echo "Platform headers included above the platform layer:"
  echo "$hits"
  exit 1
fi
echo "layering ok"
