#!/usr/bin/env python3
"""Compares two PNG rasters of the same size, pixel by pixel.

    png_compare.py REFERENCE CANDIDATE [--channel N] [--share S] [--crop]

A pixel differs when one of its channels, after both images are laid over
white, differs by more than N (default 64 of 255). The pictures match when at
most a share S of the pixels differ (default 0.03). Prints one line with the
figures; exit status 0 on a match, 1 otherwise, 2 on unreadable files.

With --crop a larger candidate is compared by its top-left corner of the
reference's size (a browser screenshot of a window larger than the page).

Reads 8-bit greyscale, RGB, palette-free RGBA and grey+alpha PNGs with zlib
alone, which is what rsvg-convert and Chromium write.
"""
import struct
import sys
import zlib


def read_png(path):
    data = open(path, "rb").read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("not a PNG")
    pos, idat, header = 8, b"", None
    while pos < len(data):
        (length,) = struct.unpack(">I", data[pos:pos + 4])
        kind = data[pos + 4:pos + 8]
        body = data[pos + 8:pos + 8 + length]
        pos += 12 + length
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            idat += body
        elif kind == b"IEND":
            break
    width, height, depth, ctype, _, _, interlace = header
    channels = {0: 1, 2: 3, 4: 2, 6: 4}.get(ctype)
    if depth != 8 or channels is None or interlace:
        raise ValueError("unsupported PNG (depth %d, colour type %d, interlace %d)" % (depth, ctype, interlace))
    raw = zlib.decompress(idat)
    stride = width * channels
    rows, prev, at = [], bytearray(stride), 0
    for _ in range(height):
        kind, line = raw[at], bytearray(raw[at + 1:at + 1 + stride])
        at += 1 + stride
        for x in range(stride):
            a = line[x - channels] if x >= channels else 0
            b = prev[x]
            c = prev[x - channels] if x >= channels else 0
            if kind == 1:
                line[x] = (line[x] + a) & 255
            elif kind == 2:
                line[x] = (line[x] + b) & 255
            elif kind == 3:
                line[x] = (line[x] + (a + b) // 2) & 255
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[x] = (line[x] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(line)
        prev = line
    pixels = []
    for line in rows:
        for x in range(width):
            px = line[x * channels:(x + 1) * channels]
            if channels == 1:
                rgb, alpha = (px[0],) * 3, 255
            elif channels == 2:
                rgb, alpha = (px[0],) * 3, px[1]
            elif channels == 3:
                rgb, alpha = tuple(px), 255
            else:
                rgb, alpha = tuple(px[:3]), px[3]
            # Over white, as a viewer shows it.
            pixels.append(tuple((v * alpha + 255 * (255 - alpha)) // 255 for v in rgb))
    return width, height, pixels


def main(argv):
    args = argv[1:]
    channel, share, crop = 64, 0.03, False
    files = []
    while args:
        a = args.pop(0)
        if a == "--channel":
            channel = int(args.pop(0))
        elif a == "--share":
            share = float(args.pop(0))
        elif a == "--crop":
            crop = True
        else:
            files.append(a)
    if len(files) != 2:
        print(__doc__.strip().splitlines()[2].strip(), file=sys.stderr)
        return 2
    try:
        w1, h1, p1 = read_png(files[0])
        w2, h2, p2 = read_png(files[1])
    except (OSError, ValueError, zlib.error, TypeError) as e:
        print("png_compare: %s" % e, file=sys.stderr)
        return 2
    if crop and w2 >= w1 and h2 >= h1 and (w1, h1) != (w2, h2):
        p2 = [p2[y * w2 + x] for y in range(h1) for x in range(w1)]
        w2, h2 = w1, h1
    if (w1, h1) != (w2, h2):
        print("size %dx%d against %dx%d" % (w2, h2, w1, h1))
        return 1
    differ = sum(1 for a, b in zip(p1, p2) if max(abs(x - y) for x, y in zip(a, b)) > channel)
    got = differ / float(len(p1) or 1)
    print("%d of %d pixels differ (%.2f%%, allowed %.2f%%)" % (differ, len(p1), got * 100, share * 100))
    return 0 if got <= share else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
