"""Shifts predicted from structure, for chains that have none."""
