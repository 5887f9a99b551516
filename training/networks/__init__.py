"""The networks: training, their inputs, their weight tables."""
