#!/usr/bin/env bash
# Makes the demo's video clip from GStreamer's test pattern (colour bars scrolling sideways): four
# seconds of 640 x 360 VP9 in MP4, about 150 KB, no third-party media. WebKitGTK plays it through
# the GStreamer plugins that scripts/setup.sh installs.
# usage: make-demo-clip.sh OUTPUT.mp4
set -euo pipefail
out=$1
# The MP4 muxer wants the chroma format on VP9 caps, which the encoder leaves out; faststart puts
# the index first, so that playback starts before the whole file has arrived.
gst-launch-1.0 -q \
  videotestsrc pattern=smpte horizontal-speed=4 num-buffers=96 \
  ! video/x-raw,width=640,height=360,framerate=24/1,format=I420 \
  ! vp9enc deadline=1 cpu-used=8 target-bitrate=250000 keyframe-max-dist=48 \
  ! video/x-vp9,chroma-format=4:2:0 \
  ! mp4mux faststart=true \
  ! filesink location="$out.part"
mv "$out.part" "$out"
