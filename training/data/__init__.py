"""What goes in: proteins with shifts and torsions, chains without shifts, input tables, files of rows."""
