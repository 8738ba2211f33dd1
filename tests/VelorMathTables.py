#!/usr/bin/env python3
"""Works out the expected values of VelorMathTest.cpp without any floating-point unit.

Every step of a curve is an exact fraction, rounded to 24 or 53 bits where the formula rounds, so that the curves must
have these bits; their digests are printed. The scalars are plain mathematics in 60 digits. Needs python3-mpmath.
"""
import struct
from fractions import Fraction as F

from mpmath import acos, cos, exp, mp, mpf, pi, sin, sqrt

mp.dps = 60


def rounded(x, bits):
    """x to the nearest number of that many bits, ties to even; far from the ends of the exponent range."""
    if x == 0:
        return F(0)
    exponent = abs(x.numerator).bit_length() - x.denominator.bit_length()
    unit = F(2) ** (exponent - bits)
    while abs(x) >= unit * 2 ** bits:
        unit *= 2
    return round(x / unit) * unit


def single(x):
    return rounded(F(x), 24)


def double(x):
    return rounded(F(x), 53)


def weighted_sum(weights, points):
    total = F(0)
    for weight, point in zip(weights, points):
        total = single(total + single(weight * point))
    return total


def bezier_weights(t):
    u = single(1 - t)
    squares = double(t * t), double(u * u)
    return [single(double(u ** 3)), single(double(double(squares[1] * 3) * t)),
            single(double(squares[0] * single(3 * u))), single(double(t ** 3))]


def tangent_weights(t):
    u = single(1 - t)
    squares = double(t * t), double(u * u)
    nine = double(9 * squares[0])
    return [single(double(squares[1] * -3)), single(double(double(nine - single(12 * t)) + 3)),
            single(double(single(6 * t) - nine)), single(double(squares[0] * 3))]


def tangent(t, xs, ys):
    x, y = weighted_sum(tangent_weights(t), xs), weighted_sum(tangent_weights(t), ys)
    square = single(single(x * x) + single(y * y))
    root = sqrt(mpf(square.numerator) / square.denominator)
    length = single(F(int(root * mpf(2) ** 200), 2 ** 200))
    factor = single(1 / length)
    return [single(x * factor), single(y * factor)]


BASIS = [[0, 1, 0, 0], [F(-1, 2), 0, F(1, 2), 0], [1, F(-5, 2), 2, F(-1, 2)], [F(-1, 2), F(3, 2), F(-3, 2), F(1, 2)]]


def catmull_rom(t, points):
    t2 = single(t * t)
    return weighted_sum([1, t, t2, single(t2 * t)], [weighted_sum(row, points) for row in BASIS])


def catmull_rom_derivative(t, points):
    factors = [1, single(t + t), single(single(3 * t) * t)]
    return weighted_sum(factors, [weighted_sum(row, points) for row in BASIS[1:]])


class Numbers:
    """Numbers of 24 bits in -2..2, the same as in VelorMathTest.cpp."""

    def __init__(self):
        self.state = 1

    def number(self):
        self.state = (self.state * 1664525 + 1013904223) % 2 ** 32
        return F((self.state >> 8) - 2 ** 23, 2 ** 22)


class Digest:
    """FNV-1a over the bits of floats."""

    def __init__(self):
        self.digest = 14695981039346656037

    def add(self, values):
        for value in values:
            bits, = struct.unpack("<I", struct.pack("<f", float(value)))
            self.digest = (self.digest ^ bits) * 1099511628211 % 2 ** 64


names = "bezierCubic2D", "bezierCubicTangent2D", "bezierCubic3D", "catmullRom3D", "derivCatmullRom3D"
digests = [Digest() for name in names]
numbers = Numbers()
for _ in range(1000):
    axes = list(zip(*([numbers.number() for axis in range(3)] for point in range(4))))
    t = numbers.number()
    point = [weighted_sum(bezier_weights(t), axis) for axis in axes]
    curves = (point[:2], tangent(t, axes[0], axes[1]), point, [catmull_rom(t, axis) for axis in axes],
              [catmull_rom_derivative(t, axis) for axis in axes])
    for digest, values in zip(digests, curves):
        digest.add(values)
for name, digest in zip(names, digests):
    print(f"// {name}: {digest.digest:#x}U")


def number(x):
    return mp.nstr(x, 12) + "F"


def m(text):
    """The float nearest to the text."""
    value = single(F(text))
    return mpf(value.numerator) / value.denominator


print("// easeInEaseOut: t, exponent, value")
for t, e in (("0.25", "2"), ("0.9", "0.5"), ("0.01", "2.5"), ("1.5", "2")):
    a, b = m(t) ** m(e), (1 - m(t)) ** m(e)
    print("{%sF, %sF, %s}," % (t, e, number(a / (a + b))))
print("// cardioid2D around (1, -2), scale 1.5: angle, x, y")
for a in ("0.5", "3.1"):
    x = (2 * cos(m(a)) - cos(2 * m(a))) * m("1.5") + 1
    y = (2 * sin(m(a)) - sin(2 * m(a))) * m("1.5") - 2
    print("{%sF, %s, %s}," % (a, number(x), number(y)))
print("// normal: x, width, mean, value")
for x, w, mean in (("0.5", "3", "0"), ("-2", "6", "1"), ("10", "30", "4")):
    sigma = m(w) / 3
    value = exp(-((m(x) - m(mean)) / sigma) ** 2 / 2) / (sqrt(2 * pi) * sigma)
    print("{%sF, %sF, %sF, %s}," % (x, w, mean, number(value)))
print("// signedAngle of (0.6, 0.8, 0) and (0, 0.6, 0.8):", number(acos(m("0.8") * m("0.6"))))
