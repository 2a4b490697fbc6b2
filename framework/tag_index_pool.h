#pragma once

class ACE_Allocator;

namespace talvik {

/// Memory for the records' tag indexes. The returned allocator lives until the image is unloaded
/// and may be used from any thread: a package may be made on one thread and released on another.
ACE_Allocator* tagIndexAllocator();

}  // namespace talvik
