"""The parts of tools/mutate."""
