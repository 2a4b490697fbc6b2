# Tests that mean nothing under user-mode emulation, each with its reason. Every other test runs there.
set(TALVIK_NOT_EMULATED
    # They start their own program anew, which the system cannot run without the emulator.
    "ModuleUseDeathTest.*"
    "TlvPackageTeardownDeathTest.*"
    # The same properties as with the first seed, minutes of them: the emulator is twenty times as slow.
    "Seeds/AlarmTextProperty.*/1"
    "Seeds/AlarmTextProperty.*/2"
    "Seeds/AlarmTextProperty.*/3")
