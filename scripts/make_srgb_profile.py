#!/usr/bin/env python3
"""Writes the built-in sRGB profile as C++ byte literals, for inclusion in an array's braces.

    scripts/make_srgb_profile.py                 writes RenderingBase/host/imaging/SrgbProfile.inc
    scripts/make_srgb_profile.py --icc FILE      writes the profile itself, for other tools

The profile is data in the source tree and not made at run time because its bytes must never change:
its name and creation date go into the keys of cached colour tables.
"""

import argparse
import pathlib

import icc

ROOT = pathlib.Path(__file__).resolve().parent.parent
INC_PATH = ROOT / "RenderingBase/host/imaging/SrgbProfile.inc"


def literals(data, per_line=16):
    """The bytes as rows of hexadecimal literals, a comma after each."""
    rows = (data[i:i + per_line] for i in range(0, len(data), per_line))
    return "".join(", ".join(f"0x{b:02x}" for b in row) + ",\n" for row in rows)


def main():
    parser = argparse.ArgumentParser(description="Writes the built-in sRGB profile.")
    parser.add_argument("--icc", type=pathlib.Path, help="write the binary profile here instead")
    arguments = parser.parse_args()
    profile = icc.srgb_profile()
    if arguments.icc:
        arguments.icc.write_bytes(profile)
        return
    origin = "// sRGB IEC61966-2.1, ICC version 4; made by scripts/make_srgb_profile.py.\n"
    INC_PATH.write_text(origin + "// clang-format off\n" + literals(profile)
                        + "// clang-format on\n")


if __name__ == "__main__":
    main()
