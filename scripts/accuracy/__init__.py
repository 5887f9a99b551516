"""Accuracy of the built program on proteins of known structure; entry: ../accuracy.py."""
