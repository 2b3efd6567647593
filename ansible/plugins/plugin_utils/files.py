# MIT licence, the device_mgmt authors.
"""Files on the controller, for their owner only."""

from __future__ import annotations

import os
import tempfile


def make_private(folder: str) -> None:
    """The folders that are missing."""
    if folder and not os.path.isdir(folder):
        make_private(os.path.dirname(folder))
        try:
            os.mkdir(folder, mode=0o700)
        except FileExistsError:
            pass  # another gateway's task was faster


def replace(path: str, text: bytes) -> None:
    """All of the text or nothing."""
    folder = os.path.dirname(path)
    make_private(folder)
    file, name = tempfile.mkstemp(prefix=os.path.basename(path) + ".", dir=folder)
    try:
        with os.fdopen(file, "wb") as stream:
            stream.write(text)
            stream.flush()
            os.fsync(stream.fileno())
        os.replace(name, path)
    except BaseException:
        os.unlink(name)
        raise
