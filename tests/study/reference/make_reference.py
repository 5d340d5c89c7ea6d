#!/usr/bin/python3
"""Works out random studies with statsmodels and scipy and writes the results to reference.txt beside this script.

Needs numpy, pandas, scipy and statsmodels; run it by hand. The values themselves are not stored: both sides make them
from the seed in the line, as whole hundredths of a micrometre, so that they are equal to the bit.
"""
from pathlib import Path

import numpy as np
import pandas as pd
from scipy import stats
import statsmodels.api as sm
from statsmodels.formula.api import ols

MASK = (1 << 64) - 1


class Random:
    """SplitMix64."""

    def __init__(self, seed):
        self.state = seed

    def below(self, count):
        self.state = (self.state + 0x9E3779B97F4A7C15) & MASK
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK
        return (z ^ (z >> 31)) % count

    def around(self, spread):
        return self.below(2 * spread + 1) - spread


def crossed(seed):
    random = Random(seed)
    parts, appraisers, trials = 2 + random.below(11), 1 + random.below(5), 2 + random.below(5)
    spreads = [[0, 30, 300, 3000][random.below(4)] for _ in range(3)]
    part = [random.around(spreads[0]) for _ in range(parts)]
    appraiser = [random.around(spreads[1]) for _ in range(appraisers)]
    rows = []
    for i in range(parts):
        for j in range(appraisers):
            cell = random.around(spreads[2])
            for _ in range(trials):
                rows.append((i, j, (300000 + part[i] + appraiser[j] + cell + random.around(100)) / 100000.0))
    return parts, appraisers, trials, pd.DataFrame(rows, columns=["part", "appraiser", "value"])


def limits(terms, level=0.95):
    """Modified large-sample interval of a sum of (factor, mean square, df), in standard deviations."""
    a = (1 - level) / 2
    g = [1 - n / stats.chi2.ppf(1 - a, n) for _, _, n in terms]
    h = [n / stats.chi2.ppf(a, n) - 1 for _, _, n in terms]
    size = [abs(c) * ms for c, ms, _ in terms]
    if terms[-1][0] > 0:
        low = sum((x * s) ** 2 for x, s in zip(g, size))
        high = sum((x * s) ** 2 for x, s in zip(h, size))
    else:
        n1, n2 = terms[0][2], terms[1][2]
        f, fl = stats.f.ppf(1 - a, n1, n2), stats.f.ppf(a, n1, n2)
        g12 = ((f - 1) ** 2 - g[0] ** 2 * f**2 - h[1] ** 2) / f
        h12 = ((1 - fl) ** 2 - h[0] ** 2 * fl**2 - g[1] ** 2) / fl
        low = (g[0] * size[0]) ** 2 + (h[1] * size[1]) ** 2 + g12 * size[0] * size[1]
        high = (h[0] * size[0]) ** 2 + (g[1] * size[1]) ** 2 + h12 * size[0] * size[1]
    middle = sum(c * ms for c, ms, _ in terms)
    return [np.sqrt(max(0, middle - np.sqrt(max(0, low)))), np.sqrt(max(0, middle + np.sqrt(max(0, high))))]


def analysis(seed):
    p, o, r, data = crossed(seed)
    data["value"] -= data["value"].mean()
    if o > 1:
        table = sm.stats.anova_lm(ols("value ~ C(part) * C(appraiser)", data).fit())
        ss, df = table["sum_sq"], table["df"]
        ssp, sso, sspo, sse = ss["C(part)"], ss["C(appraiser)"], ss["C(part):C(appraiser)"], ss["Residual"]
        msp, mso, mspo, mse = (table["mean_sq"][k] for k in ss.index)
        dpo, de = df["C(part):C(appraiser)"], df["Residual"]
        interaction_p = table["PR(>F)"]["C(part):C(appraiser)"]
    else:
        table = sm.stats.anova_lm(ols("value ~ C(part)", data).fit())
        ssp, sse = table["sum_sq"]
        msp, mse = table["mean_sq"]
        sso = sspo = mso = mspo = dpo = 0.0
        de, interaction_p = table["df"]["Residual"], 1.0
    below, db, zero = mspo, dpo, [0.0, 0.0]
    pooled = o > 1 and interaction_p > 0.25
    if pooled:
        mse, de = (sspo + sse) / (dpo + de), dpo + de
    if pooled or o == 1:
        below, db = mse, de
    ev = [(1, mse, de)]
    av = [(1 / (p * r), mso, o - 1), (-1 / (p * r), below, db)]
    inter = [(1 / r, mspo, dpo), (-1 / r, mse, de)]
    pv = [(1 / (o * r), msp, p - 1), (-1 / (o * r), below, db)]
    if o == 1:
        grr, total = ev, [(1 / r, msp, p - 1), (1 - 1 / r, mse, de)]
    elif pooled:
        grr = [av[0], (1 - 1 / (p * r), mse, de)]
        total = [pv[0], av[0], (1 - 1 / (p * r) - 1 / (o * r), mse, de)]
    else:
        grr = [av[0], (1 / r - 1 / (p * r), mspo, dpo), (1 - 1 / r, mse, de)]
        total = [pv[0], av[0], (1 / r - 1 / (p * r) - 1 / (o * r), mspo, dpo), (1 - 1 / r, mse, de)]
    variance = lambda terms: max(0.0, sum(c * ms for c, ms, _ in terms))
    v = [variance(ev), variance(av) if o > 1 else 0.0, variance(inter) if o > 1 and not pooled else 0.0, variance(pv)]
    out = [ssp, sso, sspo, sse, interaction_p, *np.sqrt(v), np.sqrt(sum(v[:3])), np.sqrt(sum(v))]
    out += limits(ev) + (limits(av) if o > 1 else zero) + (limits(inter) if o > 1 and not pooled else zero)
    return out + limits(pv) + limits(grr) + limits(total)


def student(p, df):
    """scipy's quantile is good to nine digits or so; one Newton step makes it good to all."""
    q = stats.t.ppf(p, df)
    return q - (stats.t.cdf(q, df) - p) / stats.t.pdf(q, df)


def references(seed):
    random = Random(seed)
    rows = []
    for i in range(5 + random.below(4)):
        bias = random.around(60)
        for _ in range(10 + random.below(6)):
            rows.append(((i + 1) * 0.5, ((i + 1) * 50000 + bias + random.around(100)) / 100000.0))
    return pd.DataFrame(rows, columns=["reference", "value"])


def linearity(seed):
    data = references(seed)
    data["bias"] = data["value"] - data["reference"]
    fit = ols("bias ~ reference", data).fit()
    first = data["reference"] == 0.5
    test = stats.ttest_1samp(data["bias"][first], 0.0)
    line = fit.get_prediction(pd.DataFrame({"reference": [0.5]}))
    half = student(0.975, fit.df_resid) * line.se_mean[0]
    band = [line.predicted_mean[0] - half, line.predicted_mean[0] + half]
    mean, count = data["bias"][first].mean(), first.sum()
    half = student(0.975, count - 1) * stats.sem(data["bias"][first])
    out = [fit.params["reference"], fit.params["Intercept"], fit.bse["reference"], fit.bse["Intercept"]]
    out += [fit.pvalues["reference"], fit.pvalues["Intercept"], np.sqrt(fit.scale), fit.rsquared, *band]
    return out + [mean, test.statistic, test.pvalue, mean - half, mean + half]


lines = []
for kind, work, count in (("crossed", analysis, 240), ("linearity", linearity, 60)):
    for seed in range(1, count + 1):
        lines.append(f"{kind} {seed} " + " ".join(f"{x:.17g}" for x in work(seed)))
Path(__file__).with_name("reference.txt").write_text("\n".join(lines) + "\n")
