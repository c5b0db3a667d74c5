#!/usr/bin/env python3
"""Confirms the golden cases independently of the library; run by hand: confirm_cases.py cases.inc

Every operation is computed anew from its definition in two ways:

- rounded: in Python's own doubles, with one rounding to single precision for each element and each
  result of another operation. The golden value must have the same bits. Sines, cosines and arcs come from decimal
  arithmetic of 60 digits and are rounded once where the definition says single precision.
- exact: sums of products in fractions, without any rounding. The golden value must be the exact one rounded
  to single precision, but for what the double sum may lose.
"""
import math
import struct
import sys
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 60


def from_bits(text):
    return math.nan if text == "nan" else struct.unpack("<f", struct.pack("<I", int(text, 16)))[0]


def to_float(value):
    """Single precision, to the nearest, from a double."""
    try:
        return struct.unpack("<f", struct.pack("<f", value))[0]
    except OverflowError:
        return math.copysign(math.inf, value)


def round_once(exact):
    """Single precision from a decimal, by way of a double, which must not decide the last digit."""
    rounded = to_float(float(exact))
    bits = struct.unpack("<I", struct.pack("<f", rounded))[0]
    for other in (bits + 1, bits - 1 if rounded else bits + 1):
        neighbour = struct.unpack("<f", struct.pack("<I", other))[0]
        assert abs(exact - Decimal(rounded)) <= abs(exact - Decimal(neighbour))
    return rounded


def divide(a, b):
    if b:
        return a / b
    return math.nan if a == 0 or a != a else math.copysign(math.inf, a) * math.copysign(1, b)


def compute_pi():
    def arctangent_of_inverse(n):
        total = term = Decimal(1) / n
        k, square = 1, n * n
        while abs(term) > Decimal(10) ** -58:
            term /= -square
            k += 2
            total += term / k
        return total
    return 4 * (4 * arctangent_of_inverse(5) - arctangent_of_inverse(239))


PI = compute_pi()


def sine(x):
    x = x % (2 * PI)
    total = term = x
    k = 1
    while abs(term) > Decimal(10) ** -50 * abs(total) and term:
        term *= -x * x / ((k + 1) * (k + 2))
        k += 2
        total += term
    return total


def turn(angle):
    """Sine and cosine of a double, in single precision."""
    if angle == 0:
        return [angle, 1.0]
    return [round_once(sine(Decimal(angle))), round_once(sine(Decimal(angle) + PI / 2))]


def arctangent(t):
    """Of a decimal of 0 or more."""
    if t > 1:
        return PI / 2 - arctangent(1 / t)
    halvings = 0
    while t > Decimal("0.05"):
        t = t / (1 + (1 + t * t).sqrt())
        halvings += 1
    total = term = t
    k = 1
    while term and abs(term) > Decimal(10) ** -55 * t:
        term *= -t * t
        k += 2
        total += term / k
    return total * 2 ** halvings


def direction(y, x):
    """The angle of the direction (x, y), both decimals with signed zeros."""
    if x == 0 and y == 0:
        angle = Decimal(0)
    else:
        angle = PI / 2 if x == 0 else arctangent(abs(y / x))
    if x.is_signed():
        angle = PI - angle
    return angle.copy_sign(y)


def determinant(rows):
    n = len(rows)
    if n == 1:
        return rows[0][0]
    total = 0.0
    for k in range(n):
        part = rows[0][k] * determinant([row[:k] + row[k + 1:] for row in rows[1:]])
        total = part if k == 0 else total - part if k % 2 else total + part
    return to_float(total)


def rows_of(m, n=4):
    return [list(m[4 * r:4 * r + n]) for r in range(n)]


def dot(pairs):
    total = None
    for a, b in pairs:
        total = a * b if total is None else total + a * b
    return total


def inverse(m):
    rows = rows_of(m)
    d = determinant(rows)
    if abs(d) < 0.001:
        return identity()
    result = []
    for i in range(4):
        for j in range(4):
            minor = determinant([row[:i] + row[i + 1:] for k, row in enumerate(rows) if k != j])
            result.append(to_float(divide((-1) ** (i + j) * minor, d)))
    return result


def identity():
    return [1.0 if i % 5 == 0 else 0.0 for i in range(16)]


def rotation(angles):
    (sx, cx), (sy, cy), (sz, cz) = (turn(a) for a in angles)
    return [to_float(e) for e in (
        cy * cz, sx * sy * cz + cx * sz, -cx * sy * cz + sx * sz, 0,
        -cy * sz, -sx * sy * sz + cx * cz, cx * sy * sz + sx * cz, 0,
        sy, -sx * cy, cx * cy, 0, 0, 0, 0, 1)]


def perspective(fov, aspect, near, far):
    m = identity()
    for place, angle in ((0, fov), (5, fov / aspect)):
        s, c = turn(angle / 2)
        m[place] = to_float(c / s)
    m[10] = to_float(far / (far - near))
    m[11], m[15] = 1.0, 0.0
    m[14] = to_float(-near * far / (far - near))
    return m


def length(v):
    return to_float(math.sqrt(dot(zip(v, v))))


def normalized(m):
    m = list(m)
    scales = [length(m[4 * r:4 * r + 3]) for r in range(3)]
    for r in range(3):
        for c in range(3):
            m[4 * r + c] = to_float(divide(m[4 * r + c], scales[r]))
    return m, scales


def angles(m):
    m, _ = normalized(m)
    if any(e != e or math.isinf(e) for e in m[:3] + m[4:7] + m[8:11]):
        return None
    y = direction(Decimal(m[8]), ((1 - Decimal(m[8])) * (1 + Decimal(m[8]))).sqrt())
    c = sine(y + PI / 2)
    if abs(c) <= Decimal("0.001"):
        x, z = Decimal(0), direction(Decimal(m[1]), Decimal(m[5]))
    else:
        x, z = direction(Decimal(-m[9]), Decimal(m[10])), direction(Decimal(-m[4]), Decimal(m[0]))
    return [round_once(a) for a in (x, y, z)]


def vectors(i):
    a, b, f = i[:3], i[3:6], i[6]
    return ([to_float(p + q) for p, q in zip(a, b)] + [to_float(p - q) for p, q in zip(a, b)] +
            [to_float(p * f) for p in a] + [to_float(divide(p, f)) for p in a] +
            [to_float(a[(k + 1) % 3] * b[(k + 2) % 3] - a[(k + 2) % 3] * b[(k + 1) % 3]) for k in range(3)])


def normalize(i):
    a, size = i[:3], length(i[:3])
    unit = [to_float(e * (1.0 / size)) for e in a] if size else a
    return unit + [to_float(dot(zip(a, i[3:]))), to_float(dot(zip(a, a))), size]


def scales(m):
    m, lengths = normalized(m)
    for r in range(3):
        m[4 * r + 3] = lengths[r]
    return m


def turned(places):
    def build(angle):
        s, c = turn(angle[0])
        m = identity()
        for place, value in places.items():
            m[place] = {"c": c, "s": s, "-s": -s}[value]
        return m
    return build


def product_pairs(i):
    a, b = i[:16], i[16:]
    return [[(a[4 * r + k], b[4 * k + c]) for k in range(4)] for r in range(4) for c in range(4)]


def transform_pairs(i):
    point, m = i[:3] + [1.0], i[3:]
    return [[(point[k], m[4 * k + c]) for k in range(4)] for c in range(3)]


ROUNDED = {
    "product": lambda i: [to_float(dot(p)) for p in product_pairs(i)],
    "transform": lambda i: [to_float(dot(p)) for p in transform_pairs(i)],
    "determinants": lambda i: [determinant(rows_of(i, n)) for n in (2, 3, 4)],
    "inverse": inverse,
    "rotation_x": turned({5: "c", 6: "s", 9: "s", 10: "c"}),
    "rotation_y": turned({0: "c", 2: "-s", 8: "s", 10: "c"}),
    "rotation_z": turned({0: "c", 1: "s", 4: "-s", 5: "c"}),
    "rotation": rotation,
    "perspective": lambda i: perspective(*i),
    "angles": angles,
    "scales": scales,
    "vectors": vectors,
    "normalize": normalize,
}

EXACT = {"product": product_pairs, "transform": transform_pairs}


def same(a, b):
    return (a != a and b != b) or a == b and (a or math.copysign(1, a) == math.copysign(1, b))


def is_near_exact(pairs, value):
    """Whether `value` is the exact sum of products but for half a unit of a float and the losses of double sums."""
    exact = sum(Fraction(a) * Fraction(b) for a, b in pairs)
    size = sum(abs(Fraction(a) * Fraction(b)) for a, b in pairs)
    if math.isinf(value):
        return abs(exact) >= Fraction(2) ** 127
    # Half a unit of a float, of a denormal one at least; and three double additions.
    unit = max(abs(Fraction(value)) / 2 ** 24, Fraction(1, 2 ** 150))
    return abs(exact - Fraction(value)) <= unit + size * 3 / 2 ** 53


def main():
    total, wrong, exact, without = 0, 0, 0, 0
    for number, line in enumerate(open(sys.argv[1]), 1):
        words = line.strip().strip('",').split()
        split = words.index("=")
        name = words[0]
        inputs = [from_bits(w) for w in words[1:split]]
        golden = [from_bits(w) for w in words[split + 1:]]
        expected = ROUNDED[name](inputs)
        total += 1
        if expected is None:
            # Rows of length 0, or whose length no float holds.
            without += 1
            continue
        if len(golden) != len(expected) or not all(map(same, golden, expected)):
            wrong += 1
            print(f"{number}: {name}: {golden} is not {expected}")
        if name in EXACT:
            for pairs, value in zip(EXACT[name](inputs), golden):
                exact += 1
                if not is_near_exact(pairs, value):
                    wrong += 1
                    print(f"{number}: {name}: {value} is not near the exact sum")
    print(f"{total} cases, {exact} exact sums, {wrong} wrong, {without} without a definite angle")
    return wrong != 0


if __name__ == "__main__":
    sys.exit(main())
