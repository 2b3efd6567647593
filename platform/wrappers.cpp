// The rest of the system library under the platform's names.
#include <cstdlib>
#include <cstring>
#include <endian.h>

#include <vorinfra.h>

void* vor_memcpy(void* destination, const void* source, vor_uint32 size)
{
    return memcpy(destination, source, size);
}

void* vor_memset(void* memory, vor_int32 value, vor_uint32 size)
{
    return memset(memory, value, size);
}

vor_char* vor_strcpy(vor_char* destination, const vor_char* source)
{
    return strcpy(destination, source);
}

vor_int32 vor_strcmp(const vor_char* left, const vor_char* right)
{
    return strcmp(left, right);
}

vor_int32 vor_strlen(const vor_char* string)
{
    return static_cast<vor_int32>(strlen(string));
}

vor_int32 vor_atoi(const vor_char* string)
{
    return atoi(string);
}

vor_uint32 vor_htobe32(vor_uint32 value)
{
    return htobe32(value);
}
