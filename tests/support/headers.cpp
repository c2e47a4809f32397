// Nothing of its own: its target precompiles what the tests include.
