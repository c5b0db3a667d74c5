#!/bin/bash
# WAV files that other programs wrote, and what other programs read in them: the recordings of alsa-utils, and
# files of sox and libsndfile. The program of this folder compares them with what the library makes of them.
# usage: tests/realfiles/prepare.sh FOLDER
#
# FOLDER/files.txt has a line per file: "NAME ok CHANNELS RATE BITS", with the PCM in NAME.raw, or
# "NAME refused REASON".
set -euo pipefail
cd "${1:?folder}"
rm -f -- *.wav *.raw files.txt

# accept NAME [NAME-OF-THE-SOURCE]: NAME must decode to what sox and libsndfile read, in NAME or in the file from
# which it was made by hand.
accept() {
    local name=$1 source=${2:-$1} bits encoding
    bits=$(soxi -b "$source.wav")
    [[ $bits == 8 ]] && encoding=unsigned-integer || encoding=signed-integer
    sox -V1 -D "$source.wav" -t raw -e "$encoding" -b "$bits" -L "$name.raw"
    [[ $bits == 8 ]] && encoding=-pcmu8 || encoding=-pcm16
    sndfile-convert "$encoding" "$source.wav" check.raw
    cmp "$name.raw" check.raw
    rm check.raw
    echo "$name ok $(soxi -c "$source.wav") $(soxi -r "$source.wav") $bits" >>files.txt
}
refuse() { echo "$1 refused $2" >>files.txt; }

# make NAME BITS CHANNELS RATE [SOX-OPTION...]: a sound that differs between channels.
make() {
    local name=$1 bits=$2 channels=$3 rate=$4
    shift 4
    sox -V1 -R -D -n -r "$rate" -b "$bits" -c "$channels" "$@" "$name.wav" \
        synth 0.4 sine 440 sine 660 sine 880 noise triangle 300 sawtooth 200 gain -3
}

# A chunk by hand: chunk ID DATA [PAD].
chunk() { printf '%s\\x%02x\\x00\\x00\\x00%s%s' "$1" "${#2}" "$2" "${3-}"; }
# insert FROM TO CHUNK: CHUNK between the "fmt " chunk of 16 bytes and the data. The size in the file header stays.
insert() { { head -c 36 "$1.wav"; printf "$3"; tail -c +37 "$1.wav"; } >"$2.wav"; }

# Recordings.
for file in /usr/share/sounds/alsa/*.wav; do
    name=alsa-$(basename "$file" .wav)
    cp "$file" "$name.wav"
    accept "$name"
done

# What sox writes: 8 and 16 bits, 1, 2 and 6 channels, several rates. More than two channels need "wavpcm" for
# the plain format.
for bits in 8 16; do
    for rate in 8000 11025 22050 44100 48000 96000; do
        for channels in 1 2; do
            make "sox-$bits-$channels-$rate" "$bits" "$channels" "$rate"
            accept "sox-$bits-$channels-$rate"
        done
    done
    make "sox-$bits-6-wavpcm" "$bits" 6 48000 -t wavpcm
    accept "sox-$bits-6-wavpcm"
    make "sox-$bits-6" "$bits" 6 48000
    refuse "sox-$bits-6" "Unsupported wave format"
done
# A writer that cannot go back leaves the sizes as it guessed them: here a whole frame is missing.
head -c -4 sox-16-2-44100.wav >cut.wav
head -c -4 sox-16-2-44100.raw >cut.raw
echo "cut ok 2 44100 16" >>files.txt

# Other formats.
make sox-24 24 1 44100
refuse sox-24 "Unsupported wave format"
make sox-24-wavpcm 24 1 44100 -t wavpcm
refuse sox-24-wavpcm "Usupported bits per sample"
make sox-32-wavpcm 32 2 44100 -t wavpcm
refuse sox-32-wavpcm "Usupported bits per sample"
make sox-float 32 1 44100 -e floating-point
refuse sox-float "Unsupported wave format"
make sox-mulaw 8 1 8000 -e mu-law
refuse sox-mulaw "Unsupported wave format"
make sox-ima 4 1 8000 -e ima-adpcm
refuse sox-ima "Unsupported wave format"
sox -V1 sox-16-1-44100.wav -t aiff not-riff.wav
refuse not-riff "Invalid header"
sox -V1 sox-16-1-44100.wav -B -t wav big-endian.wav 2>/dev/null
refuse big-endian "Invalid header"

# libsndfile puts what it knows about a file before the data, always in even sizes.
for title in A Ab Abc "A longer title"; do
    name=sndfile-list-${#title}
    sndfile-metadata-set --str-title "$title" sox-16-2-22050.wav titled.wav
    sndfile-convert -pcm16 titled.wav "$name.wav"
    head -c 40 "$name.wav" | tail -c 4 | grep -qa LIST
    accept "$name"
done
sndfile-convert -pcmu8 titled.wav sndfile-list-8bit.wav
accept sndfile-list-8bit
sndfile-metadata-set --bext-description "A description" sox-16-1-44100.wav sndfile-bext.wav 2>/dev/null >&2
accept sndfile-bext
rm titled.wav

# Chunks of odd size before the data. The pad byte is no part of what this library reads: the data is found only
# where there is none.
insert sox-16-1-44100 odd-bare "$(chunk note abc)"
accept odd-bare sox-16-1-44100
insert sox-16-1-44100 odd-padded "$(chunk note abc '\x00')"
soxi -s odd-padded.wav >/dev/null
refuse odd-padded "Cannot find data chunk "
insert sox-8-2-8000 odd-list "$(chunk LIST INFOabc)"
accept odd-list sox-8-2-8000
insert sox-8-2-8000 even-list "$(chunk LIST INFOabcd)"
accept even-list
