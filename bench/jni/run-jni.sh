#!/usr/bin/env bash
# JNI round trip of SuperCaptureMode.nativeProcess on a 1920x1080 frame,
# timed in Java. Usage: run-jni.sh <build> <out>
set -euo pipefail
build=$1
out=$2
mkdir -p "$out"
java_home=${JAVA_HOME:-/usr/lib/jvm/java-17-openjdk-amd64}
"$java_home/bin/java" -Djava.library.path="$build/lib" \
  -cp "$build/java/bench-jni.jar:$build/java/orvan-media.jar:$build/java/android-host.jar" \
  com.orvan.media.bench.SuperCaptureModeBench | tee "$out/bench-jni.txt"
