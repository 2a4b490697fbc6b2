// The reference host's rooms as a library, so that a program can stand between them and the module.
// The rooms are linked whole; this unit gives the library a source.
#include "host/platform/debug_kits.h"

namespace {

[[maybe_unused]] const auto kAnchor = &talvik::makeDebugKits;

}  // namespace
