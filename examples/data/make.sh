#!/usr/bin/env bash
# Makes strings.wav anew. Needs sox.
set -euo pipefail
cd "$(dirname "$0")"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# A phrase in D, one note every 0.3 s, each left to ring; lower notes to the left, higher ones to the right.
notes=(D3 A3 D4 F#4 A4 F#4 E4 B3 G3 C#4 D4)
count=0
for note in "${notes[@]}"; do
    sox -R -r 44100 -c 1 -n -b 16 "$folder/$count.wav" synth 1.6 pluck "$note" fade t 0 1.6 0.6 \
        pad "$(awk "BEGIN { print $count * 0.3 }")" \
        remix "1v$(awk "BEGIN { print 0.7 - $count / 25 }")" "1v$(awk "BEGIN { print 0.3 + $count / 25 }")"
    count=$((count + 1))
done
sox -R -m "$folder"/*.wav -r 22050 -b 16 strings.wav norm -3 reverb 30
