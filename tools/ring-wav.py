#!/usr/bin/env python3
"""Writes resources/sound/ring.wav: the console's own ring, a soft two-tone
burble (two short bursts of 440 Hz + 480 Hz, then a pause), 16-bit mono at
16 kHz. Run it again only to change the sound; the WAV is kept in the tree."""
import math
import struct
import sys
import wave

RATE = 16000
out = sys.argv[1] if len(sys.argv) > 1 else "resources/sound/ring.wav"


def tone(seconds):
    n = int(RATE * seconds)
    fade = int(RATE * 0.01)  # no clicks at the edges
    for i in range(n):
        gain = min(1.0, i / fade, (n - i) / fade)
        t = i / RATE
        yield 0.3 * gain * (math.sin(2 * math.pi * 440 * t) + math.sin(2 * math.pi * 480 * t))


def silence(seconds):
    return (0.0 for _ in range(int(RATE * seconds)))


samples = [*tone(0.4), *silence(0.2), *tone(0.4), *silence(2.0)]
with wave.open(out, "wb") as w:
    w.setnchannels(1)
    w.setsampwidth(2)
    w.setframerate(RATE)
    w.writeframes(b"".join(struct.pack("<h", int(s * 32767)) for s in samples))
