#!/usr/bin/env python3
"""Replace one family section of include/kivvc.h with the contents of a file,
under a lock, so that several people can fill their sections at once.

    tools/header_section.py SECTION FILE      e.g.  "h264 inter" /tmp/inter.h
    tools/header_section.py --show SECTION    print the section's current text
"""
import fcntl
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
HEADER = os.path.join(ROOT, "include", "kivvc.h")


def bounds(text, section):
    begin = "/* ---- section: %s ---- */\n" % section
    end = "/* ---- end section: %s ---- */" % section
    i = text.find(begin)
    j = text.find(end)
    if i < 0 or j < 0:
        sys.exit("no section '%s' in %s" % (section, HEADER))
    return i + len(begin), j


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--show":
        text = open(HEADER).read()
        i, j = bounds(text, sys.argv[2])
        sys.stdout.write(text[i:j])
        return
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    section, path = sys.argv[1], sys.argv[2]
    body = open(path).read()
    if body and not body.endswith("\n"):
        body += "\n"
    with open(HEADER + ".lock", "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        text = open(HEADER).read()
        i, j = bounds(text, section)
        text = text[:i] + body + text[j:]
        tmp = HEADER + ".tmp"
        with open(tmp, "w") as f:
            f.write(text)
        os.replace(tmp, HEADER)


if __name__ == "__main__":
    main()
