// Symbol visibility of the allocator library: everything is hidden unless marked.
#pragma once

#if defined(NOX_ALLOCATOR_STATIC)
#define NOX_ALLOCATOR_API
#else
#define NOX_ALLOCATOR_API __attribute__((visibility("default")))
#endif
