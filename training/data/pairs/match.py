"""Joins a shift list with the chain whose residues it was measured on."""

from dataclasses import dataclass

import gemmi

from data.pairs.errors import InputError

LEAST_IDENTITY = 0.90  # of the aligned residues
LEAST_COVERAGE = 0.50  # of the residues with shifts; tags and loose ends are not in the crystal


@dataclass
class Match:
    chain: object
    partner: list  # per residue of the chain its position in the shift sequence, or None
    identity: float
    coverage: float


def scoring():
    costs = gemmi.AlignmentScoring()
    costs.match, costs.mismatch, costs.gapo, costs.gape = 5, -4, -10, -1
    return costs


def align(codes, breaks, shift_codes):
    """Global alignment with affine gaps: per letter of `codes` the position of its partner in `shift_codes`,
    or None. Gaps open for nothing at the ends and where the chain is broken."""
    free = [True, *breaks[1:], True]
    result = gemmi.align_string_sequences(list(shift_codes), list(codes), free, scoring())
    partner, position, count = [], 0, ""
    for letter in result.cigar_str():
        if letter.isdigit():
            count += letter
            continue
        for _ in range(int(count)):
            if letter == "I":
                position += 1
            else:
                partner.append(position if letter == "M" else None)
                position += letter == "M"
        count = ""
    return partner


def match_chain(chain, shift_list):
    codes = chain.codes().upper()
    partner = align(codes, [residue.after_break for residue in chain.residues], shift_list.codes)
    pairs = [(a, shift_list.codes[p]) for a, p in zip(codes, partner) if p is not None]
    known = [(a, b) for a, b in pairs if "X" not in (a, b)]
    equal = sum(a == b for a, b in known)
    covered = {p for p in partner if p is not None}
    with_shifts = [k for k, shifts in enumerate(shift_list.shifts) if shifts]
    coverage = sum(k in covered for k in with_shifts) / max(len(with_shifts), 1)
    # A pair of different residues keeps its place in the alignment but hands over nothing.
    partner = [
        p if p is not None and a == shift_list.codes[p] != "X" else None for a, p in zip(codes, partner)
    ]
    return Match(chain, partner, equal / max(len(known), 1), coverage)


def best_match(chains, shift_list, where):
    """The chain that takes up most of the shift list. InputError when none is alike enough."""
    matches = [match_chain(chain, shift_list) for chain in chains]
    best = max(matches, key=lambda match: match.identity * match.coverage)
    if best.identity < LEAST_IDENTITY or best.coverage < LEAST_COVERAGE:
        raise InputError(
            f"{where}: the best chain, {best.chain.name}, has {100 * best.identity:.0f} % identical residues over "
            f"{100 * best.coverage:.0f} % of the residues with shifts; at least {100 * LEAST_IDENTITY:.0f} % over "
            f"{100 * LEAST_COVERAGE:.0f} % are needed: another protein, or too much of it is missing"
        )
    return best
