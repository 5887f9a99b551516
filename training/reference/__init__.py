"""What is counted rather than trained: reference values, triplets, fragment database, values from
literature."""
