"""All settings of the training kit in one place."""

# Atom order of every table, vector and loop.
ATOMS = ("N", "HA", "C", "CA", "CB", "HN")
# Order of the six shift pairs in the network's residue vector.
VECTOR_ATOMS = ("HN", "N", "HA", "C", "CA", "CB")
AMINO_ACIDS = "ACDEFGHIKLMNPQRSTVWY"
# One-letter codes with rows of their own: c is an oxidised (disulfide-bonded) cysteine, C a reduced one.
RESIDUE_CODES = "ACDEFGHIKLMNPQRSTVWYc"

SEED = 20260101
THREADS = 1  # of one process; two processes with one thread each are faster than one with two
PROCESSES = 2

# Proteins left out: 3WRPA is a near-duplicate of 2WRPR, which has two more nuclei.
EXCLUDED_PROTEINS = ("3WRPA",)
# A numbering step above this is a jump of the numbering, not that many missing residues.
LARGEST_GAP = 60
JUMP_REPLACEMENT = 10

# Referencing of each protein: its offset from n shifts is multiplied by n / (n + prior) and taken off.
OFFSET_PRIOR = 8.0

# --- reference tables -------------------------------------------------------------------------
COIL_CLASSES = ("-", "T", "S")
TRIM = 0.10  # cut from either end before a mean
ADJUSTMENT_PRIOR = 10.0  # a mean over n residues is multiplied by n / (n + prior)
NEIGHBOUR_PRIOR = 25.0
BACKFITTING_ROUNDS = 4
CARBON_INTERCEPTS = (
    0.094,
    0.459,
)  # ppm, of secondary CA at CA - CB = 0 from below and above: the program's check
LIMIT_PERCENTILES = (0.3, 99.7)
LIMIT_PRIOR = 30.0

# Triplet distance: relative weight of the outer residues, cost of a missing shift in variances, weight of the
# squared homology distance at the three positions. The program averages triplets below a distance of 200;
# scaled so, the ten nearest of nearly every query qualify.
TRIPLET_SCALE = 12.0
TRIPLET_OUTER_WEIGHT = 0.35
TRIPLET_MISSING_COST = 1.16
TRIPLET_HOMOLOGY = (0.12, 0.20, 0.12)

# --- fragment database and triplet library -------------------------------------------------------
DATABASE_SCALES = {"N": 2.3, "HA": 0.23, "C": 1.0, "CA": 0.95, "CB": 1.1, "HN": 0.45}
LIBRARY_ROWS = 24000

# --- input variants: which shifts a training copy of a protein keeps ---------------------------------
# name: shares in the training of (surf20, the hybrid network, the structure networks); masks in inputs.py
VARIANTS = {
    "observed": (2.0, 0.5, 2.0),
    "random_light": (1.0, 0.5, 1.0),
    "random_light2": (1.0, 0.5, 1.0),
    "random_heavy": (0.7, 1.0, 1.0),
    "no_proton": (0.0, 3.0, 0.0),
    "no_proton_random": (0.0, 1.5, 0.0),
    "no_ha_hn": (0.7, 0.5, 0.7),
    "nuclei": (1.0, 0.7, 1.0),
    "nuclei2": (1.0, 0.7, 1.0),
    "ca_cb_n_hn": (1.0, 0.7, 1.0),
    "sparse": (0.3, 1.5, 0.5),
}

# --- shifts predicted from structure ----------------------------------------------------------------
WORST_RESOLUTION = 2.5  # angstrom, of crystal structures that are looked at
SIMULATED_RESOLUTION = 2.5  # of chains with simulated shifts
SIMULATED_LENGTH = 40  # residues, of the shortest one
DATABASE_RESOLUTION = 2.5  # of chains in the fragment database
# Mean B factor of N CA C O of a residue in the database: square angstrom, and standard deviations above the
# chain's mean.
LARGEST_B = 90.0
LARGEST_B_DEVIATION = 3.0
MODEL_FOLDS = 5
MODEL_MEMBERS = 5
MODEL_HIDDEN = 160
MODEL_BATCH = 512
MODEL_EPOCHS = 40
MODEL_TREES = 220

# --- simulated shifts of chains without shifts ------------------------------------------------------
ERROR_STRETCH = 12  # residues whose prediction errors are drawn together
LARGEST_ERROR = 6.0  # expected errors
SIMULATED_LACK = 0.04  # share of shifts left out at random
SIMULATED_SHARE = 5.0  # simulated windows per real one in an epoch of the box networks
SS_SIMULATED_SHARE = 4.0  # the same of the structure networks
SIMULATED_VARIANTS = 3  # input variants of one chain, the first is "observed"

# --- networks ---------------------------------------------------------------------------------
FOLDS = 3
BATCH = 1024
LEARNING_RATE = 2e-3  # of AdamW
WEIGHT_DECAY = 0.02  # of AdamW
BIAS_RATE = 3e-3  # of the biases beside orthogonalised steps
# Noise on the inputs, ppm: an offset per window and nucleus, and a share of the nucleus's spread per value.
OFFSET_NOISE = {"HN": 0.05, "N": 0.3, "HA": 0.03, "C": 0.2, "CA": 0.2, "CB": 0.2}
VALUE_NOISE = 0.05

BOX_RATE = 6e-3  # orthogonalised steps
BOX_EPOCHS = 60
BOX_FOLD_EPOCHS = 24
BOX_LEVEL2_EPOCHS = 6
BOX_LEVEL2_RATE = 5e-4
BOX_SMOOTHING = 1.0  # boxes, of the maps that the program searches under
HYBRID_EPOCHS = 40
HYBRID_ABSENT = 0.08  # share of windows whose outer residues are made absent
SS_EPOCHS = 30
SS_RATE = 0.01  # orthogonalised steps of level 1
SS_LEVEL2_EPOCHS = 20
SEQSS_EPOCHS = 4
SEQSS15_EPOCHS = 3
SEQ_LEVEL2_EPOCHS = 6
# A training sequence shows one of its profiles, by these weights: the sequence alone, against the sequences
# at hand, against a large database. The last exists for the paired proteins and so many chains up to that
# length.
PROFILE_SHARES = (0.2, 0.3, 0.5)
DEEP_CHAINS = 327
DEEP_LENGTH = 450
PROFILE_PROCESSES = 1
RELATED_EVALUE = 1e-3  # sequences with such a local alignment are relatives
CHI1_EPOCHS = 12
CHI1_RATE = 0.01  # orthogonalised steps
CHI1_REAL_WEIGHT = 2.0  # of a residue of a real protein, in units of one with simulated shifts
CHI1_TYPES = "CDEFHIKLMNQRSTVWY"
