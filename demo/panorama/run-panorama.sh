#!/usr/bin/env bash
# Simulated panorama sweep through the Java PanoramaModule; writes
# panorama-sweep.png (where each frame was placed) and panorama-sweep.txt.
# Usage: run-panorama.sh <build> <out>
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1
out=$2
mkdir -p "$out"
samples=${OV_SAMPLES:-$root/samples}
java_home=${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}
"$java_home/bin/java" -Djava.awt.headless=true -Djava.library.path="$build/lib" \
  -cp "$build/java/demo-panorama.jar:$build/java/orvan-media.jar:$build/java/android-host.jar" \
  com.orvan.media.demo.PanoramaSweepDemo "$samples/coffee.jpg" "$out" | tee "$out/panorama-sweep.txt"
# Its caption for the gallery, with the figures of the sweep.
awk -v OFS='\t' '$1 ~ /^[0-9]+$/ { n++; if ($4 == 0) { ok++; x = $5; y = $6 } }
  END { print "Panorama", "panorama-sweep.png", "Java PanoramaModule (nativeProcess)",
        "A simulated sweep of " n " frames over the sample photograph; the " ok " accepted frames are " \
        "pasted at the offsets the module returned, the last at " x ", " y "." }' \
  "$out/panorama-sweep.txt" >>"$out/gallery.tsv"
