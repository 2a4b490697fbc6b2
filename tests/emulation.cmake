# Tests that mean nothing under user-mode emulation, each with its reason. Every other test runs there.
set(TALVIK_NOT_EMULATED)
