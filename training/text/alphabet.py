"""The classes of the recogniser, and the text that scores spell."""

ALPHABET = "".join(map(chr, range(ord("!"), ord("~") + 1))) + " "
CLASSES = 1 + len(ALPHABET)  # 0: no character (the blank of CTC)


def best_path(scores, characters=("", *ALPHABET)):
    """The text of the best class of each column (T x classes), repeats and blanks taken out, and its characters' mean
    score; characters: those of the classes."""
    said = [characters[best] for best in scores.argmax(1)]
    kept = [i for i, (character, before) in enumerate(zip(said, ["", *said])) if character and character != before]
    return "".join(said[i] for i in kept).strip(), float(scores.max(1)[kept].mean()) if kept else 0.0
