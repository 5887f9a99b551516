"""Writes network weights in the program's table format and reads them back."""

import os

import numpy as np

from data.textables import write_table

LAYER_FILES = ("WI", "WL1", "WL2")


def _text(value):
    return "0" if abs(value) < 5e-7 else "%.4g" % value


def write_layer(path, weights, biases, remark):
    """One layer: members x units x inputs and members x units; one block of rows per member, bias in column
    b."""
    inputs = weights.shape[2]
    columns = [str(k) for k in range(1, inputs + 1)] + ["b"]
    rows = (
        [_text(value) for value in row] + [_text(bias)]
        for member, member_bias in zip(weights, biases)
        for row, bias in zip(member, member_bias)
    )
    write_table(path, columns, ["%f"] * (inputs + 1), rows, (remark,), cells=["%s"] * (inputs + 1))


def write_level(folder, name, level, layers, remark):
    """The three files of one level of a network."""
    for suffix, (weights, biases) in zip(LAYER_FILES, layers):
        write_layer(os.path.join(folder, f"{name}.level{level}.{suffix}.tab"), weights, biases, remark)


def read_layer(path, members):
    """Weights and biases of a written layer."""
    with open(path) as handle:
        table = np.array([line.split() for line in handle if line[0] in "-0123456789"], float)
    blocks = table.reshape(members, len(table) // members, -1)
    return blocks[:, :, :-1], blocks[:, :, -1]


def read_level(folder, name, level, members=3):
    return [
        read_layer(os.path.join(folder, f"{name}.level{level}.{suffix}.tab"), members)
        for suffix in LAYER_FILES
    ]
