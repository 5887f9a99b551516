"""Training inputs prepared by the program itself: shift tables with masked shifts, dumped by orbeln-dump."""

import os
import subprocess
import zlib

import numpy as np

import settings
from data.textables import write_table

ATOMS = settings.ATOMS
COLUMN = {atom: k for k, atom in enumerate(ATOMS)}
SMALLEST_TABLE = 10  # shifts; smaller tables are not worth a run

# Nuclei that a variant "nuclei" hides together.
NUCLEUS_SETS = (
    ("C",),
    ("CB",),
    ("HA",),
    ("CA",),
    ("HN",),
    ("N",),
    ("C", "HA"),
    ("C", "CB"),
    ("CA", "CB"),
    ("N", "HN"),
    ("CB", "HA"),
)
# Nuclei that a variant "sparse" keeps.
SPARSE_SETS = (
    ("N", "HN"),
    ("N", "HN", "HA"),
    ("HN", "HA"),
    ("N", "HN", "CA"),
    ("CA", "CB"),
    ("N", "HN", "CA", "C"),
)


def _drop(keep, rng, residue_share, atom_share):
    keep &= rng.random(keep.shape[0])[:, None] >= residue_share
    keep &= rng.random(keep.shape) >= atom_share


def _only(keep, nuclei):
    keep[:, [k for k, atom in enumerate(ATOMS) if atom not in nuclei]] = False


def mask(protein, variant):
    """Which shifts of the protein the variant keeps (residues x 6, boolean)."""
    rng = np.random.default_rng([settings.SEED, zlib.crc32(f"{protein.name} {variant}".encode())])
    keep = np.isfinite(protein.shifts)
    if variant.startswith("random_light"):
        _drop(keep, rng, 0.05, 0.12)
    elif variant == "random_heavy":
        _drop(keep, rng, 0.15, 0.30)
    elif variant == "no_proton_random":
        _drop(keep, rng, 0.08, 0.15)
    elif variant == "no_ha_hn":
        _only(keep, ("N", "C", "CA", "CB"))
    elif variant.startswith("nuclei"):
        hidden = NUCLEUS_SETS[rng.integers(len(NUCLEUS_SETS))]
        _only(keep, [atom for atom in ATOMS if atom not in hidden])
        _drop(keep, rng, 0.02, 0.05)
    elif variant == "ca_cb_n_hn":
        _only(keep, ("CA", "CB", "N", "HN"))
    elif variant == "sparse":
        _only(keep, SPARSE_SETS[rng.integers(len(SPARSE_SETS))])
        _drop(keep, rng, 0.10, 0.05)
    return keep


def write_input(path, protein, keep):
    """Input shift table of the program; residues missing in the chain are X. Returns the number of shifts."""
    first = protein.resid[0]
    sequence = ["X"] * (protein.resid[-1] - first + 1)
    rows = []
    for k, number in enumerate(protein.resid):
        code = protein.code[k].upper()
        sequence[number - first] = code
        for atom in ATOMS:
            if not keep[k, COLUMN[atom]]:
                continue
            value = protein.shifts[k, COLUMN[atom]]
            # Glycine's alpha protons are read from HA2 and HA3 only.
            names = ("HA2", "HA3") if code == "G" and atom == "HA" else (atom,)
            rows += [(number, code, name, value) for name in names]
    text = "".join(sequence)
    data = [("FIRST_RESID", first)] + [("SEQUENCE", text[k : k + 50]) for k in range(0, len(text), 50)]
    write_table(
        path, ("RESID", "RESNAME", "ATOMNAME", "SHIFT"), ("%4d", "%1s", "%4s", "%8.3f"), rows, (), data
    )
    return len(rows)


def cluster_mates(proteins):
    """Per protein the names of its homology cluster, itself included."""
    members = {}
    for protein in proteins:
        members.setdefault(protein.cluster, []).append(protein.name)
    return {protein.name: members[protein.cluster] for protein in proteins}


def run_dump(tool, mode, jobs, home, folder):
    """Runs `tool mode LISTFILE` over the job lines, one process per core. `home` holds the installation's
    tab/."""
    running = []
    for part in range(settings.PROCESSES):
        lines = jobs[part :: settings.PROCESSES]
        if not lines:
            continue
        listing = os.path.join(folder, f"list{part}.txt")
        with open(listing, "w") as handle:
            handle.write("\n".join(lines) + "\n")
        log = open(os.path.join(folder, f"dump{part}.log"), "w")
        environment = dict(os.environ, ORBELN_DIR=home)
        running.append(
            (
                subprocess.Popen(
                    [tool, mode, listing], env=environment, cwd=folder, stdout=log, stderr=subprocess.STDOUT
                ),
                log,
            )
        )
    for process, log in running:
        status = process.wait()
        log.close()
        if status != 0:
            raise RuntimeError(f"{tool} {mode} ended with status {status}, see {log.name}")


class Inputs:
    """Dumped inputs of all proteins. Residues of all proteins are numbered through; row `count` is nobody.

    vectors: per variant residues x 32 (shift pairs in the order HN N HA C CA CB, then residue type / 10), nan
    = none missing: per variant the number of missing shifts per residue (6 = nothing known) predicted, error:
    residues x 6 in the vectors' order, of simulated shifts; error 0 = a real residue pool: (error rows in the
    vectors' order, first rows of stretches), see simulate.error_pool
    """

    def __init__(self, proteins, pool):
        self.proteins = proteins
        self.count = sum(len(protein) for protein in proteins)
        self.start = np.cumsum([0] + [len(protein) for protein in proteins])
        self.chain = np.repeat(np.arange(len(proteins)), [len(protein) for protein in proteins])
        self.real = np.array([protein.variants is None for protein in proteins])[self.chain]
        self.resid = np.concatenate([protein.resid for protein in proteins])
        self.code = "".join("".join(protein.code) for protein in proteins)
        self.ss8 = "".join("".join(protein.ss8) for protein in proteins)
        self.phi = np.concatenate([protein.phi for protein in proteins])
        self.psi = np.concatenate([protein.psi for protein in proteins])
        self.variants = list(settings.VARIANTS)
        self.vectors = np.full((len(self.variants), self.count, 32), np.nan, np.float32)
        self.missing = np.full((len(self.variants), self.count), 6, np.int8)
        order = [COLUMN[atom] for atom in settings.VECTOR_ATOMS]
        self.pool = None if pool is None else (pool[0][:, order].astype(np.float32), pool[1])
        self.predicted, self.error = np.zeros((2, self.count + 1, len(ATOMS)), np.float32)
        for chain, protein in enumerate(proteins):
            if protein.predicted is not None:
                span = slice(self.start[chain], self.start[chain + 1])
                self.predicted[span], self.error[span] = protein.predicted[:, order], protein.error[:, order]

    def neighbours(self, reach):
        """Row numbers of the residues -reach..reach around each residue; -1 where the chain has none."""
        rows = np.arange(self.count)
        result = np.full((self.count, 2 * reach + 1), -1)
        for step in range(-reach, reach + 1):
            other = rows + step
            inside = (other >= 0) & (other < self.count)
            other_in = other[inside]
            good = (self.chain[other_in] == self.chain[rows[inside]]) & (
                self.resid[other_in] == self.resid[rows[inside]] + step
            )
            result[rows[inside][good], step + reach] = other_in[good]
        return result

    def redraw_errors(self, shifts, missing, rows, rng):
        """New errors of the simulated shifts that are not missing, one stretch a window, so that no epoch
        shows the same values again. shifts (changed), missing: windows x residues x 6; rows: windows x
        residues."""
        if self.pool is None:
            return
        errors, first = self.pool
        drawn = errors[rng.choice(first, len(rows))[:, None] + np.arange(rows.shape[1])]
        scale = self.error[rows]
        simulated = (missing == 0.0) & (scale > 0.0)
        shifts[simulated] = (self.predicted[rows] + scale * drawn)[simulated]

    def read_dump(self, path, variant, chain):
        """Takes over one dump file."""
        rows = {number: self.start[chain] + k for k, number in enumerate(self.proteins[chain].resid)}
        with open(path) as handle:
            for line in handle:
                words = line.rstrip("\n").split("\t")
                row = rows.get(int(words[0]))
                if row is not None:
                    self.missing[variant, row] = int(words[2])
                    self.vectors[variant, row] = np.array(words[3:35], np.float32)


def prepare(proteins, tool, home, folder, pool=None):
    """Writes all input tables, dumps them and reads the result (cached as inputs.npz in `folder`)."""
    inputs = Inputs(proteins, pool)
    cache = os.path.join(folder, "inputs.npz")
    if os.path.exists(cache):
        with np.load(cache) as stored:
            inputs.vectors, inputs.missing = stored["vectors"], stored["missing"]
        return inputs
    work = os.path.join(folder, "inputs")
    os.makedirs(work, exist_ok=True)
    mates = cluster_mates(proteins)
    jobs, outputs = [], []
    for v, variant in enumerate(inputs.variants):
        for chain, protein in enumerate(proteins):
            if protein.variants is not None and variant not in protein.variants:
                continue
            stem = os.path.join(work, f"{chain}.{protein.name}.{variant}")
            if write_input(stem + ".tab", protein, mask(protein, variant)) < SMALLEST_TABLE:
                continue
            flags = " -noproton" if variant.startswith("no_proton") else ""
            excluded = f" -excl {','.join(mates[protein.name])}" if protein.variants is None else ""
            jobs.append(f"{stem}.tab {stem}.tsv{flags}{excluded}")
            outputs.append((stem + ".tsv", v, chain))
    run_dump(tool, "inputs", jobs, home, work)
    for path, v, chain in outputs:
        inputs.read_dump(path, v, chain)
    np.savez(cache, vectors=inputs.vectors, missing=inputs.missing)
    return inputs
