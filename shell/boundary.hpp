// boundary.hpp: what is taken down of the platform's operations while they are
// under way.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <vector>

#include <vorinfra.h>

#include "exits.hpp"
#include "observe.hpp"

namespace vorcfg {

// What is known of a message while the library still builds it.
struct Draft {
    const void* message = nullptr; // its data_ptr
    const vor_uchar* meta_data = nullptr;
    const vor_uchar* payload = nullptr;
};

struct Chain {
    const TLV_CHAIN* chain = nullptr;
    const vor_uchar* destination = nullptr;
    std::vector<Element> elements;
};

struct Boundary {
    static inline Watch* watch; // the one in scope
    static inline int depth;    // how many of the platform's own operations are under way
    static inline std::vector<Draft> drafts;
    static inline Chain chain_built; // the library builds one at a time

    static bool watching() { return watch != nullptr && depth == 0; }
    static bool captures() { return watching() && watch->settings.capture; }

    static Draft& draft_of(const VOR_IPC_MSG_REF* message);
    static bool is_secret(const char* text);
    static void add(const TLV_CHAIN* chain, Element element);

    // A message that goes out now; what becomes of it is for the caller to add.
    static Message& begin(Way way, vor_uint16 sap, vor_uint32 id, const VOR_IPC_MSG_REF* sent, vor_uint16 length);
    static Message& push(Message message);
    static void answered(Message& message, VOR_IPC_MSG_REF* response);

    static void tell(const char* format, auto... values)
    {
        if (watch->settings.trace && !watch->settings.capture) {
            std::fprintf(stderr, format, values...);
        }
    }
};

// One platform operation, as the library behind this executable has it.
template <auto Operation>
auto* platform()
{
    static auto* const found =
        reinterpret_cast<decltype(Operation)>(dlsym(RTLD_NEXT, std::string(symbol_of<Operation>()).c_str()));
    if (found == nullptr) {
        std::fprintf(stderr, "vorcfg: the platform library has no %s\n", std::string(symbol_of<Operation>()).c_str());
        std::_Exit(exit_unusable);
    }
    return found;
}

// Passes an operation on. What the platform's operations call of each other
// comes by here as well and is none of the library's doing.
template <auto Operation, class... Arguments>
auto pass(Arguments... arguments)
{
    struct Depth {
        Depth() { Boundary::depth++; }
        ~Depth() { Boundary::depth--; }
    } const deeper;
    return platform<Operation>()(arguments...);
}

} // namespace vorcfg
