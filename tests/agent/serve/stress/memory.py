"""The memory of a daemon over many rounds."""

from crowd import Broken

SLACK = 16 * 1024  # kilobytes


class Memory:
    """What is resident after each round. It may grow until half of the rounds are over.

    Fewer than eight rounds are not judged.
    """

    def __init__(self):
        self.kilobytes = []

    def add(self, kilobytes):
        self.kilobytes.append(kilobytes)

    def check(self):
        """The least of the last quarter is at most the greatest of the second quarter, and a slack."""
        if not self.is_judged():
            return
        quarter = len(self.kilobytes) // 4
        before = max(self.kilobytes[quarter:2 * quarter])
        after = min(self.kilobytes[-quarter:])
        if after > before + SLACK:
            raise Broken(f"memory grows: at most {before} kB resident in the second quarter of "
                         f"{len(self.kilobytes)} rounds, at least {after} kB in the last; "
                         f"the slack is {SLACK} kB")

    def is_judged(self):
        return len(self.kilobytes) >= 8

    def text(self):
        judged = "" if self.is_judged() else " (too few rounds to judge)"
        shown = ", ".join(f"{self.kilobytes[i]} kB" for i in self.shown())
        return f"resident after the rounds {shown}{judged}"

    def shown(self):
        last = len(self.kilobytes) - 1
        return sorted({last * i // 4 for i in range(5)}) if last >= 0 else []
