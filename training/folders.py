"""Folders that commands write into."""

from pathlib import Path


def made(path):
    """The folder, as a Path, made where it is not there; raises SystemExit with the cause where it cannot be."""
    folder = Path(path)
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise SystemExit(f"{folder}: {error.strerror}") from error
    return folder
