"""Measurements on training proteins that were held out."""
