"""Mutants of the parsers and printers: where they are, how sources are rewritten, and which of them the tests notice."""
