#!/usr/bin/env python3
"""Writes a small seed corpus for fuzz_container into the folder given.

Odd first byte: the rest is an uncompressed container layout; even: the rest
is the container file as stored (zlib stream, level 9)."""
import os
import struct
import sys
import zlib


def layout(files):
    directory = b"".join(bytes([len(n)]) + n + struct.pack("<i", len(c)) for n, c in files)
    return directory + b"\0" + b"".join(c for _, c in files)


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    job = [(b"JOB.tdb", b"SQLite format 3\0" + bytes(200)), (b"JOB.mco", b"\x01\x02"), (b"JOB.mst", b"")]
    seeds = {
        "empty": layout([]),
        "job": layout(job),
        "one": layout([(b"a", b"x")]),
        "latin1": layout([(b"Caf\xe9.tdb", b"abc")]),
    }
    for name, raw in seeds.items():
        with open(os.path.join(folder, name + "-raw"), "wb") as f:
            f.write(b"\x01" + raw)
        with open(os.path.join(folder, name + "-zlib"), "wb") as f:
            f.write(b"\x00" + zlib.compress(raw, 9))


if __name__ == "__main__":
    main()
