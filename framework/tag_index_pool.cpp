#include "framework/tag_index_pool.h"

#include <ace/Malloc_Allocator.h>

namespace talvik {

ACE_Allocator* tagIndexAllocator()
{
    static ACE_New_Allocator allocator;
    return &allocator;
}

}  // namespace talvik
