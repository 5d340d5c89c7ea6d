#!/usr/bin/python3
"""Works out the fits of tests/numeric with LAPACK and writes them to reference.txt beside this script.

Needs numpy and scipy. The pivoted QR is DGEQP3 through scipy.linalg.qr, the LU is DGETRF through scipy.linalg.lu_factor.
One line for each row of numbers: its name, then the numbers. "case KIND NAME" opens a case; "tolerance" is the relative
agreement that each coefficient of "p" allows.
"""
import math
import warnings
from pathlib import Path

import numpy as np
import scipy.linalg

warnings.simplefilter("ignore")  # the singular cases are wanted
EPS = 2.220446049250313e-16
random = np.random.default_rng(20240611)


def back_substitute(triangle, right):
    right = right.copy()
    for k in range(len(right) - 1, -1, -1):
        right[k] /= triangle[k, k]
        right[:k] -= right[k] * triangle[:k, k]
    return right


def qr_solve(matrix, right, rank_cut):
    rows, columns = matrix.shape
    q, r, pivot = scipy.linalg.qr(matrix, mode="economic", pivoting=True)
    rank = min(rows, columns)
    if rank_cut:
        tolerance = min(1e1 * EPS * max(rows, columns), math.sqrt(EPS)) * abs(r[0, 0])
        above = np.abs(np.diag(r)) > tolerance
        rank = rank if above.all() else int(np.argmin(above))
    p = np.zeros(columns)
    p[pivot[:rank]] = back_substitute(r[:rank, :rank], (q.T @ right)[:rank])
    return p


def left_divide(matrix, right):
    rows, columns = matrix.shape
    if rows != columns:
        return qr_solve(matrix, right, True)
    lu, pivot = scipy.linalg.lu_factor(matrix)
    return scipy.linalg.lu_solve((lu, pivot), right)


def tolerances(matrix, p):
    """Ten roundings, as far as the condition and the larger terms beside a coefficient magnify them, but at least 1e-10."""
    if not np.isfinite(p).all():
        return np.zeros(len(p))
    heights = np.abs(matrix).max(axis=0)
    condition = np.linalg.cond((matrix / heights)[:, p != 0])
    terms = np.abs(p) * heights
    return np.array([max(1e-10, 10 * EPS * condition * terms.max() / t) if t > 0 else 0.0 for t in terms])


out = []


def write(kind, name, matrix, p, **rows):
    out.append(f"case {kind} {name}")
    for key, row in {**rows, "p": p, "tolerance": tolerances(matrix, p)}.items():
        out.append(" ".join([key] + [repr(float(v)) for v in np.atleast_1d(row)]))


def polynomial(name, degree, x, y):
    x, y = np.asarray(x, float), np.asarray(y, float)
    powers = np.ones((len(x), degree + 1))
    for j in range(degree - 1, -1, -1):
        powers[:, j] = x * powers[:, j + 1]
    write("polynomial", name, powers, qr_solve(powers, y, False), degree=degree, x=x, y=y)


def surface(name, current, position, noise=0.05):
    I, P = np.asarray(current, float), np.asarray(position, float)
    F = 2 + 310 * I + 1.5 * P - 12 * I * P + 0.8 * I * P * P + noise * random.standard_normal(len(I))
    terms = np.stack([np.ones(len(I)), I, P, I * P, I * (P * P)], axis=1)
    write("surface", name, terms, left_divide(terms, F), current=I, position=P, force=F)


def basis(name, n, x, y):
    x, y = np.asarray(x, float), np.asarray(y, float)
    centres = np.linspace(x.min(), x.max(), n) if n > 1 else np.array([x.max()])
    xscale = (x.max() - x.min()) / n * 5.0

    def step(t):
        return 1.0 if t > 37 else 0.0 if t < -37 else math.exp(t) / (math.exp(t) + 1.0)

    steps = np.array([[step((a - b) / xscale) for b in centres] for a in x])
    write("basis", name, steps, left_divide(steps, y), n=n, x=x, y=y, centres=centres, xscale=xscale)


def spread(low, high, n):
    return np.round(random.uniform(low, high, n), 6)


for degree in range(1, 6):
    x = spread(-2, 2, 14)
    polynomial(f"well_scaled_{degree}", degree, x, 1 + x - 0.5 * x**degree + 0.01 * random.standard_normal(14))
polynomial("exact_points_5", 5, range(6), [1, -2, 4, 0, 3, 5])
polynomial("sample_correction", 1, [0, 1000, 2000, 1523.5, 812.25], [0, 1000, 2000, 1525.1, 810.75])
polynomial("far_from_zero_3", 3, 1000 + spread(0, 10, 12), spread(-1, 1, 12))
polynomial("wide_5", 5, spread(0, 1e4, 20), spread(-1, 1, 20))
polynomial("micrometres_in_metres_4", 4, 1e-6 * spread(0, 50, 16), spread(-1, 1, 16))
polynomial("huge_5", 5, 1e40 * spread(-1, 1, 12), spread(-1, 1, 12))
polynomial("tiny_5", 5, 1e-45 * spread(-1, 1, 12), spread(-1, 1, 12))
polynomial("all_equal_1", 1, [2, 2, 2], [1, 2, 4])

for n in (6, 20, 60):
    surface(f"samples_{n}", spread(0.1, 1.2, n), spread(0.2, 6, n))
surface("samples_5_square", spread(0.1, 1.2, 5), spread(0.2, 6, 5))
surface("micrometres", spread(0.1, 1.2, 20), 1e3 * spread(0.2, 6, 20))
surface("positions_all_1_ties", spread(0.1, 1.2, 8), np.ones(8))
surface("positions_all_3", spread(0.1, 1.2, 8), np.full(8, 3.0))
surface("positions_all_small", spread(0.1, 1.2, 12), np.full(12, 0.04))
surface("positions_all_equal_square", [1, 2, 4, 8, 16], np.full(5, 2.0))
surface("currents_all_equal", np.full(9, 0.5), spread(0.2, 6, 9))
surface("one_point_many_times", np.full(7, 0.5), np.full(7, 2.0))
for n in (1, 2, 3, 4):
    surface(f"underdetermined_{n}", spread(0.1, 1.2, n), spread(0.2, 6, n))

for n in (1, 3, 7):
    x = spread(0.1, 6, 30)
    basis(f"centres_{n}", n, x, 3 + np.sin(x))
basis("symmetric_7", 7, np.round(np.linspace(-3, 3, 25), 3), np.linspace(-3, 3, 25) ** 2)
basis("square_3", 3, [0.5, 2.5, 6], [1, 3, 2])
basis("underdetermined_7", 7, [0.5, 2.5, 4, 6], [1, 3, 2, 4])

# What is left of some columns is so small here that downdated norms are rounding: only norms formed anew pivot right.
for step in (1e-8, 1e-9):
    surface(f"positions_nearly_equal_{step}", spread(0.1, 1.2, 8), 3 + step * spread(0.2, 6, 8))

Path(__file__).with_name("reference.txt").write_text("\n".join(out) + "\n")
