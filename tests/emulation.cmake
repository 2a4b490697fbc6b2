# Tests that mean nothing under user-mode emulation, each with its reason. Every other test runs there.
set(TALVIK_NOT_EMULATED
    # They start their own program anew, which the system cannot run without the emulator.
    "ModuleUseDeathTest.*"
    "TlvPackageTeardownDeathTest.*")
