// The system library's memory under the platform's names.
#include <cstdlib>

#include <vorinfra.h>

void* vor_malloc(vor_uint32 size)
{
    return malloc(size);
}

void vor_free(void* memory)
{
    free(memory);
}

void* vor_realloc(void* memory, vor_uint32 size)
{
    return realloc(memory, size);
}
