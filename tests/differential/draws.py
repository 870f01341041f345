"""Random words against the published generator, and laws that are formulas of words."""
import math
from fractions import Fraction

import numpy as np
from seluutils import random as laws

from common import Difference, expect

WORD = 2**64 - 1
STEP = 0x9E3779B97F4A7C15


def mix(z):
    """SplitMix64's."""
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9 & WORD
    z = (z ^ z >> 27) * 0x94D049BB133111EB & WORD
    return z ^ z >> 31


class Words:
    """xoshiro256++ by its paper, seeded by SplitMix64."""

    def __init__(self, state):
        self.state = list(state)

    @classmethod
    def stream(cls, seed, stream):
        def words(start):
            return [mix(start + k * STEP & WORD) for k in (1, 2)]

        hashed = mix(stream)
        second = seed + 2 * STEP + hashed + mix(hashed) & WORD
        return cls(words(seed + hashed & WORD) + words(second))

    def next(self):
        a, b, c, d = self.state

        def turned(x, k):
            return (x << k | x >> (64 - k)) & WORD

        result = (turned(a + d & WORD, 23) + a) & WORD
        t = b << 17 & WORD
        c, d = c ^ a, d ^ b
        b, a = b ^ c, a ^ d
        self.state = [a, b, c ^ t, turned(d, 45)]
        return result

    def text(self):
        return "xoshiro256++ " + " ".join(f"{word:016x}" for word in self.state)

    def unit(self):
        """Of 32 bits, as the older laws take it."""
        return (self.next() >> 32) * 2.0**-32


def near(given, wanted, text):
    """Equal but for the last places of logarithms and roots."""
    for g, w in zip(given, wanted, strict=True):
        if g != w and not abs(g - w) <= 1e-14 * max(abs(g), abs(w)):
            raise Difference(f"{text}: {given} instead of {wanted}")


def normal(words):
    angle = 2 * math.pi * words.unit()
    return math.sqrt(-2 * math.log(words.unit())) * math.cos(angle)


def exponential(words):
    return -math.log(words.unit())


def law_of(chance):
    """A law of the library, and a function of words that gives its next number."""
    a, b = chance.uniform(-5, 5), chance.uniform(0.1, 5)
    return chance.choice((
        lambda: (laws.Uniform(a, a + b, exact=False), lambda w: b_of(a, b) * w.unit() + a),
        lambda: (laws.Uniform(a, a + b), lambda w: min(a + b_of(a, b) * ((w.next() >> 11) * 2.0**-53),
                                                      math.nextafter(a + b, -math.inf))),
        lambda: (laws.Exponential(b, exact=False), lambda w: exponential(w) / b),
        lambda: (laws.Rayleigh(b, exact=False), lambda w: math.sqrt(2 * exponential(w)) * b),
        lambda: (laws.ChordLength(), lambda w: math.sqrt(w.unit())),
        lambda: (laws.CircleDiameter(), lambda w: math.sqrt(1 - w.unit() ** 2)),
    ))()


def b_of(a, b):
    return (a + b) - a


def case(chance):
    kind = chance.random()
    seed, stream = (chance.choice((0, 1, 42, WORD, chance.getrandbits(64))) for _ in range(2))
    source, words = laws.Source(seed, stream), Words.stream(seed, stream)
    n = chance.randint(1, 40)
    text = f"seed {seed}, stream {stream}, {n} draws"
    if kind < 0.3:
        expect(source.save(), words.text(), text)
        expect(source.words(n).tolist(), [words.next() for _ in range(n)], text)
        expect(source.save(), words.text(), f"{text}, state afterward")
    elif kind < 0.7:
        law, draw = law_of(chance)
        near(law.sample(n, source).tolist(), [draw(words) for _ in range(n)], f"{law!r}, {text}")
        expect(source.save(), words.text(), f"{law!r}, {text}, state afterward")
    elif kind < 0.85:
        # Absolute, as a cosine near 0 and a logarithm near 1 keep few digits.
        mean, sigma = chance.uniform(-3, 3), chance.uniform(0.1, 3)
        given = laws.Normal(mean, sigma, exact=False).sample(n, source)
        wanted = [normal(words) * sigma + mean for _ in range(n)]
        if not np.abs(given - wanted).max() <= 1e-13:  # not a number differs, too
            raise Difference(f"normal {mean}, {sigma}, {text}: {given.tolist()} instead of {wanted}")
        expect(source.save(), words.text(), f"normal, {text}, state afterward")
    else:
        return case_discrete(chance, source, words)
    return None


def case_discrete(chance, source, words):
    """One word each; the shares of all words are those of the weights, which the table must give."""
    weights = [chance.choice((0, 1, 2, 5, 10)) for _ in range(chance.randint(1, 8))]
    if not any(weights):
        return False
    n = 2000
    given = laws.Discrete(list(range(len(weights))), weights).sample(n, source)
    for _ in range(n):
        words.next()
    expect(source.save(), words.text(), f"weights {weights}: state afterward")
    found = np.bincount(given, minlength=len(weights))
    for count, weight in zip(found.tolist(), weights):
        share = Fraction(weight, sum(weights))
        spread = math.sqrt(n * share * (1 - share))
        if weight == 0 and count or abs(count - n * share) > 7 * spread:
            raise Difference(f"weights {weights}: {found.tolist()} of {n} draws")
