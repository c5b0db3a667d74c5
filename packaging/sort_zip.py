#!/usr/bin/env python3
"""Orders the entries of zip archives by name, with the time of SOURCE_DATE_EPOCH. usage: packaging/sort_zip.py ZIP..."""
import os
import pathlib
import sys
import time
import zipfile


def sort(path):
    when = time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6]
    new = path.with_suffix(".sorted")
    with zipfile.ZipFile(path) as old, zipfile.ZipFile(new, "w") as out:
        for info in sorted(old.infolist(), key=lambda info: info.filename):
            if info.is_dir():
                continue
            entry = zipfile.ZipInfo(info.filename, when)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            program = info.filename.endswith((".exe", ".dll"))
            entry.external_attr = (0o100755 if program else 0o100644) << 16
            out.writestr(entry, old.read(info), compresslevel=9)
    new.replace(path)


for name in sys.argv[1:]:
    sort(pathlib.Path(name))
