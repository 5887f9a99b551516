"""Writes and reads the program's text tables (REMARK, DATA, VARS, FORMAT lines, then rows)."""


def write_table(path, columns, formats, rows, remarks=(), data=(), cells=None):
    """One table. `formats` are printf conversions such as %8.3f; rows hold one value per column. `cells`
    replaces the conversions in the rows where these are written otherwise than the FORMAT line says."""
    with open(path, "w") as handle:
        for remark in remarks:
            handle.write(f"REMARK {remark}\n")
        for key, value in data:
            handle.write(f"DATA {key} {value}\n")
        handle.write("\nVARS   " + " ".join(columns) + "\nFORMAT " + " ".join(formats) + "\n\n")
        template = " ".join(cells or formats) + "\n"
        for row in rows:
            handle.write(template % tuple(row))


def read_table(path):
    """List of rows (dictionaries of text) of a table and its DATA values joined by key."""
    columns, rows, data = [], [], {}
    with open(path) as handle:
        for line in handle:
            words = line.split()
            if not words or words[0] in ("REMARK", "FORMAT"):
                continue
            if words[0] == "VARS":
                columns = words[1:]
            elif words[0] == "DATA":
                data[words[1]] = data.get(words[1], "") + "".join(words[2:])
            elif len(words) == len(columns):
                rows.append(dict(zip(columns, words)))
    return rows, data
