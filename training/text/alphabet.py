"""The classes of the recogniser, and the text that its scores spell."""

ALPHABET = "".join(map(chr, range(ord("!"), ord("~") + 1))) + " "
CLASSES = 1 + len(ALPHABET)  # 0: no character (the blank of CTC)


def greedy(scores):
    """The text of the best class of each column (T x CLASSES), repeats and blanks taken out."""
    best = scores.argmax(1)
    kept = [c for c, before in zip(best, [0, *best[:-1]]) if c and c != before]
    return "".join(ALPHABET[c - 1] for c in kept)
