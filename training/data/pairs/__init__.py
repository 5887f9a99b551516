"""Rows of the training input formats from public files; entry: ../make_pairs.py."""
