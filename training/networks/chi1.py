"""Training of the chi1 fragment networks and of their calibration table chi1.tab."""

import math
import os
from types import SimpleNamespace

import numpy as np
import torch

import settings
from data.inputs import SMALLEST_TABLE, cluster_mates, mask, run_dump, write_input
from data.textables import write_table
from networks.ensemble import Ensemble, evaluate_layers, orthogonalised, shuffled, standardisation, train
from networks.write_tables import write_level
from reference import database

HIDDEN = 15
BINS = 11
SCORES_PER_ROTAMER = 10
FEWEST_SCORES = 3
ROTAMERS = ("g-", "g+", "t")
SMALLEST_CALLED = 0.6  # stated probability of a class
VARIANTS = ("observed", "random_light")


def rotamer(chi1):
    """0 g-, 1 g+, 2 t, -1 unknown (nan or above 999)."""
    chi1 = np.asarray(chi1, float)
    result = np.where((chi1 > -120.0) & (chi1 <= 0.0), 0, np.where((chi1 > 0.0) & (chi1 <= 120.0), 1, 2))
    return np.where(np.isnan(chi1) | (chi1 > 999.0), -1, result)


def write_placeholders(tab):
    """Networks of zeros where none are written yet: the second pass evaluates them, their scores are not
    used."""
    for letter in settings.CHI1_TYPES:
        if not os.path.exists(os.path.join(tab, f"chi1_{letter}.level1.WI.tab")):
            layers = [
                (np.zeros((3, n, m)), np.zeros((3, n))) for n, m in ((39, 39), (HIDDEN, 39), (1, HIDDEN))
            ]
            write_level(tab, f"chi1_{letter}", 1, layers, "Placeholder")


def related_chains(own, extra):
    """Names of the chains without shifts that resemble the proteins `own`."""
    clusters = set().union(*(extra.relatives.get(name, ()) for name in own))
    return {protein.name for protein, _, _ in extra.database if protein.cluster in clusters}


def simulated_relatives(proteins, folds, extra):
    """Chains with simulated shifts that resemble proteins of one fold only, and their folds: the fold's box
    network and database hold none of them, so they are searched as the program will search a new protein."""
    fold_of = {}
    for protein, fold in zip(proteins, folds):
        for cluster in extra.relatives.get(protein.name, ()):
            fold_of.setdefault(cluster, set()).add(int(fold))
    chosen = [protein for protein in extra.simulated if len(fold_of.get(protein.cluster, ())) == 1]
    return chosen, np.array([min(fold_of[protein.cluster]) for protein in chosen], int)


def fold_home(home, folder, fold_model, fold, weights):
    """Installation like `home` whose box network never saw the fold."""
    tab = os.path.join(folder, f"fold{fold}", "tab")
    os.makedirs(tab, exist_ok=True)
    for name in os.listdir(os.path.join(home, "tab")):
        link = os.path.join(tab, name)
        if os.path.lexists(link):
            os.remove(link)
        if not name.startswith("surf20.level1."):
            os.symlink(os.path.join(home, "tab", name), link)
    layers = [
        (weight[fold :: settings.FOLDS], bias[fold :: settings.FOLDS])
        for weight, bias in fold_model.layers(weights)
    ]
    write_level(tab, "surf20", 1, layers, f"Fold {fold} held out")
    return os.path.dirname(tab)


def dump_candidates(proteins, folds, reference, extra, fold_model, weights, tool, home, folder):
    """Candidate fragments of every protein as the second pass hands them to the chi1 networks: query row,
    fragment chi1, inputs. proteins: real and simulated, with their folds. Each fold searches a database
    without its own homology clusters, under maps of a box network that never saw them. Cached in chi1.npz."""
    cache = os.path.join(folder, "chi1.npz")
    if not os.path.exists(cache):
        work = os.path.join(folder, "chi1")
        os.makedirs(work, exist_ok=True)
        write_placeholders(os.path.join(home, "tab"))
        paired = [protein for protein in proteins if protein.variants is None]
        mates = cluster_mates(paired)
        parts = [[], [], []]
        start = np.cumsum([0] + [len(protein) for protein in proteins])
        for fold in range(settings.FOLDS):
            own = {protein.name for protein, f in zip(proteins, folds) if f == fold}
            library = os.path.join(work, f"fold{fold}.tab")
            database.write_database(
                library, paired, reference, extra.paired, extra.database, own | related_chains(own, extra)
            )
            fold_folder = fold_home(home, work, fold_model, fold, weights)
            jobs, outputs = [], []
            for chain in np.nonzero(folds == fold)[0]:
                protein = proteins[chain]
                stem = os.path.join(work, f"{chain}.{protein.name}")
                if (
                    write_input(stem + ".tab", protein, mask(protein, VARIANTS[chain % len(VARIANTS)]))
                    < SMALLEST_TABLE
                ):
                    continue
                excluded = f" -excl {','.join(mates[protein.name])}" if protein.variants is None else ""
                jobs.append(f"{stem}.tab {stem}.tsv -db {library}{excluded}")
                outputs.append((chain, stem + ".tsv"))
            run_dump(tool, "chi1", jobs, fold_folder, work)
            os.remove(library)
            for chain, path in outputs:
                _read_candidates(path, proteins[chain], start[chain], parts)
                os.remove(path)
        np.savez(
            cache, query=np.concatenate(parts[0]), chi1=np.concatenate(parts[1]), x=np.concatenate(parts[2])
        )
    with np.load(cache) as data:
        return data["query"], data["chi1"], data["x"]


def _read_candidates(path, protein, start, parts):
    """Appends (query row, fragment chi1, 39 inputs) of one dump file."""
    rows = {number: start + k for k, number in enumerate(protein.resid)}
    query, numbers = [], []
    with open(path) as handle:
        for line in handle:
            words = line.rstrip("\n").split("\t", 5)
            row = rows.get(int(words[0]))
            if row is not None:
                query.append(row)
                numbers.append(words[5])
    if query:
        table = np.array("\t".join(numbers).split("\t"), np.float32).reshape(len(query), 40)
        parts[0].append(np.array(query))
        parts[1].append(table[:, 0])
        parts[2].append(table[:, 1:])


def fragment_weights(query, state, real):
    """Weight of each fragment in the training: the fragments of one rotamer of one query together weigh 1,
    since the program takes a few of the best of every rotamer however many there are; of a real protein
    CHI1_REAL_WEIGHT.
    """
    _, group, count = np.unique(query * len(ROTAMERS) + state, return_inverse=True, return_counts=True)
    weight = np.where(real, settings.CHI1_REAL_WEIGHT, 1.0) / count[group]
    return (weight / weight.mean()).astype(np.float32)


def _weighted_mse(model, x, target, weight):
    return (weight * (model(x)[:, :, 0] - target) ** 2).mean(dim=1).sum()


def rotamer_means(query, chi1, score):
    """Per query the mean of the (up to) ten smallest scores of each rotamer, 1 where fewer than three; with
    the queries. Mirrors the program's use of the scores."""
    names = rotamer(chi1)
    keep = names >= 0
    query, names, score = query[keep], names[keep], score[keep]
    order = np.lexsort((score, query))
    query, names, score = query[order], names[order], score[order]
    unique, begin = np.unique(query, return_index=True)
    means = np.ones((len(unique), 3))
    for k, (low, high) in enumerate(zip(begin, list(begin[1:]) + [len(query)])):
        for state in range(3):
            best = score[low:high][names[low:high] == state][:SCORES_PER_ROTAMER]
            if len(best) >= FEWEST_SCORES:
                means[k, state] = best.mean()
    return unique, means


def bins(means):
    """Bin of a rotamer mean: 10 above 1, 0 below 0, else the integer part of ten times the mean."""
    return np.clip((10.0 * np.clip(means, 0.0, 1.0)).astype(int), 0, 10)


def calibrate(slots, truth, pooled=None):
    """Weights of the eleven bins, largest 1: conditional logit of the true rotamer, smoothed along the bins
    and drawn towards the weights of all types together."""
    logits = torch.zeros(BINS, requires_grad=True)
    anchor = torch.zeros(BINS) if pooled is None else torch.as_tensor(np.log(pooled)).float()
    slots, truth = torch.from_numpy(slots), torch.from_numpy(truth)
    optimiser = torch.optim.LBFGS([logits], max_iter=200, line_search_fn="strong_wolfe")

    def closure():
        optimiser.zero_grad()
        loss = torch.nn.functional.cross_entropy(logits[slots], truth, reduction="sum")
        rise = torch.relu(logits[1:] - logits[:-1])
        loss = loss + 2.0 * ((logits[1:] - logits[:-1]) ** 2).sum() + 50.0 * (rise**2).sum()
        centred = (logits - logits.mean()) - (anchor - anchor.mean())
        loss = loss + (5.0 if pooled is not None else 0.05) * (centred**2).sum()
        loss.backward()
        return loss

    optimiser.step(closure)
    values = logits.detach().double().numpy()
    return np.exp(values - values.max())


def chances(weights, slots):
    """Probabilities of the three rotamers from the bins of their mean scores."""
    chance = weights[slots]
    return chance / chance.sum(axis=1, keepdims=True)


def reliability(chance, right):
    """[(count, mean stated probability, share right)] of the likeliest rotamer in tenths of its
    probability."""
    tenth = np.minimum((10.0 * chance).astype(int), 9)
    return [
        (int((tenth == k).sum()), chance[tenth == k].mean(), right[tenth == k].mean())
        for k in range(3, 10)
        if (tenth == k).any()
    ]


def _train(letter, data, rows):
    """Layers of one chi1 network fitted on the given rows."""
    seed = settings.SEED + settings.CHI1_TYPES.index(letter)
    rng = np.random.default_rng(seed)
    columns = [column[rows] for column in (data.x, data.target, data.weight)]
    centre, scale = standardisation(columns[0])
    model = Ensemble(3, 39, HIDDEN, 1, centre, scale, seed)

    def batches():
        for index in shuffled(len(columns[0]), settings.BATCH, rng):
            yield tuple(torch.from_numpy(column[index]) for column in columns)

    steps = max(1, int(rows.sum()) // settings.BATCH)
    train(
        model,
        batches,
        _weighted_mse,
        settings.CHI1_EPOCHS,
        steps,
        f"chi1_{letter}",
        orthogonalised(model, settings.CHI1_RATE),
    )
    return model.layers()


def _columns(proteins, folds, candidates):
    """The candidates with what is known of their queries, one array each; `weight` is filled per residue
    type."""
    query, chi1, x = candidates
    sizes = [len(protein) for protein in proteins]
    query_truth = rotamer(np.concatenate([protein.chi1 for protein in proteins]))
    truth, state = query_truth[query], rotamer(chi1)
    letter = np.frombuffer("".join("".join(protein.code) for protein in proteins).upper().encode(), np.uint8)[
        query
    ]
    return SimpleNamespace(
        query=query,
        chi1=chi1,
        x=x,
        query_truth=query_truth,
        state=state,
        letter=letter,
        known=(truth >= 0) & (state >= 0),
        target=(state != truth).astype(np.float32),
        weight=np.zeros(len(query), np.float32),
        fold=np.repeat(folds, sizes)[query],
        real=np.repeat([protein.variants is None for protein in proteins], sizes)[query],
    )


def _held_out(letter, data, mine):
    """Bins of the rotamer means and true rotamers of all real queries, by networks that never saw their
    fold."""
    slots, truth = [], []
    for fold in range(settings.FOLDS):
        layers = _train(letter, data, mine & (data.fold != fold))
        test = np.nonzero(mine & data.real & (data.fold == fold))[0]
        score = evaluate_layers(layers, data.x[test].astype(float)).mean(axis=0)[:, 0]
        queries, means = rotamer_means(data.query[test], data.chi1[test], score)
        slots.append(bins(means))
        truth.append(data.query_truth[queries])
    return np.concatenate(slots), np.concatenate(truth)


def train_all(proteins, folds, candidates, tab):
    """Trains the 17 networks on all proteins, real and simulated, and calibrates them on scores of real
    proteins by networks that held them out; writes all tables. folds: fold number per protein."""
    data = _columns(proteins, folds, candidates)
    held = {}
    for letter in settings.CHI1_TYPES:
        mine = data.known & (data.letter == ord(letter))
        data.weight[mine] = fragment_weights(data.query[mine], data.state[mine], data.real[mine])
        held[letter] = _held_out(letter, data, mine)
        write_level(
            tab,
            f"chi1_{letter}",
            1,
            _train(letter, data, mine),
            "Chi1 fragment score of residue type %s: near 0 same rotamer, near 1 another." % letter,
        )
    pooled = calibrate(*(np.concatenate(parts) for parts in zip(*held.values())))
    tables = {letter: calibrate(*held[letter], pooled) for letter in settings.CHI1_TYPES}
    _report(held, tables)
    write_table(
        os.path.join(tab, "chi1.tab"),
        ("RESNAME",) + tuple(str(k) for k in range(BINS)),
        ("%-3s",) + ("%8.5f",) * BINS,
        [(letter, *tables[letter]) for letter in settings.CHI1_TYPES],
        (
            "Weight of a rotamer by the bin (tenths) of its mean chi1 score, per residue type.",
            "Conditional logit fit on proteins held out of the network training.",
        ),
    )


def _report(held, tables):
    """Prints how many held-out residues get a class and how often it is right."""
    summary, best, right, loss = [], [], [], []
    for letter, (slots, truth) in held.items():
        chance = chances(tables[letter], slots)
        best.append(chance.max(axis=1))
        right.append(chance.argmax(axis=1) == truth)
        loss.append(-np.log(chance[np.arange(len(truth)), truth]))
        called = best[-1] >= SMALLEST_CALLED
        share = right[-1][called].mean() if called.any() else math.nan
        summary.append(f"{letter}: {100 * called.mean():.0f} % called, {100 * share:.0f} % right")
    best, right = np.concatenate(best), np.concatenate(right)
    called = best >= SMALLEST_CALLED
    print("  chi1 of held-out proteins: " + "; ".join(summary))
    print(
        f"  all types: {100 * called.mean():.1f} % called, {100 * right[called].mean():.1f} % right, log loss "
        f"{np.concatenate(loss).mean():.4f}; stated and real probability by tenths: "
        + ", ".join(
            f"{stated:.2f} {share:.2f} ({count})" for count, stated, share in reliability(best, right)
        ),
        flush=True,
    )
