#!/usr/bin/env python3
"""Writes sounds as raw 32-bit floats, and what ffmpeg's own meter says of each: a row "name channels rate I LRA TP"."""
import pathlib
import re
import subprocess
import sys

NOISE = "anoisesrc=r=48000:d=30:c=pink:a=0.5:s=1"
SOUNDS = {
    "noise": (1, 48000, NOISE),
    "steps": (2, 44100, "aevalsrc=0.3*sin(2*PI*440*t)*(0.1+mod(floor(t/4)\\,4)/4)|0.2*sin(2*PI*3000*t):s=44100:d=40"),
    "surround": (6, 48000, NOISE + ",pan=5.1|c0=c0|c1=0.5*c0|c2=0.7*c0|c3=2*c0|c4=0.3*c0|c5=0.8*c0,tremolo=f=0.2:d=0.8"),
}


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    rows = []
    for name, (channels, rate, source) in SOUNDS.items():
        raw = folder / f"{name}.f32"
        # Of the floats that the file has, not of those before.
        ffmpeg = ["ffmpeg", "-nostdin", "-hide_banner", "-y"]
        layout = {1: "mono", 2: "stereo", 6: "5.1"}[channels]
        subprocess.run([*ffmpeg, "-loglevel", "error", "-f", "lavfi", "-i", source, "-f", "f32le", str(raw)], check=True)
        told = subprocess.run([*ffmpeg, "-f", "f32le", "-ar", str(rate), "-ac", str(channels), "-i", str(raw), "-af",
                               f"aformat=channel_layouts={layout},ebur128=peak=true", "-f", "null", "-"],
                              check=True, capture_output=True, text=True).stderr
        summary = told[told.rindex("Summary:"):]
        values = [re.search(rf"{label}:\s+(-?[0-9.]+)", summary)[1] for label in ("I", "LRA", "Peak")]
        rows.append(" ".join([name, str(channels), str(rate), *values]))
    (folder / "measured.txt").write_text("\n".join(rows) + "\n")


main()
