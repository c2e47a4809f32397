#!/bin/bash
# Renders the PNG files in this folder from the SVG files, which have a variant for 16 pixels (needs rsvg-convert).
set -eu
cd "$(dirname "$0")"
for name in lumetra text-x-bms; do
  for size in 16 24 32 48 64 128 256; do
    drawing=$name.svg
    [ "$size" != 16 ] || drawing=$name-16.svg
    rsvg-convert --width "$size" --height "$size" --output "$name-$size.png" "$drawing"
  done
done
