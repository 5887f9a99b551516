"""One batch over many entries: plan, groups of entries, and what is made of all of them. Driven by workflow/Snakefile.

A results folder holds

    plan/             groups of entries with settings and the identity of the installation
    entries/ID/       one folder an entry, moved into place when it is complete; entry.json tells how it went
    groups/           per group: summaries of its entries (.json) and rows of their residues (.tsv)
    names.json        which input has which ID: kept, so that IDs stay when inputs are added
    index.html, entries.tsv, failures.tsv, residues.parquet or residues.tsv.xz, accuracy.md, batch.json
"""
