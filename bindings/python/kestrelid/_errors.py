"""What goes wrong. The text is one line for a person: the file, where there is one, and the cause."""


class Error(Exception):
    """What Kestrelid could not do."""


class UnreadableError(Error):
    """A file, its bytes or a Pillow image hold no picture that can be decoded."""


class ArgumentError(Error, ValueError):
    """A value out of range: a shape, a format, an option."""


class OutOfMemoryError(Error, MemoryError):
    """The picture, or the work on it, does not fit into memory."""


class LibraryError(Error, OSError):
    """libkestrelid-detection cannot be loaded; the text says what helps."""
