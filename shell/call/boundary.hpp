// boundary.hpp: what is taken down of the platform's operations while they are
// under way. The operations have no argument to carry it in, so there is one.
#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vorinfra.h>

#include "call/watch.hpp"
#include "input/exit_codes.hpp"
#include "rows/binding.hpp"

namespace vorcfg {

// What is known of a message while the library still builds it.
struct Unsent {
    const void* message = nullptr; // its data_ptr
    const vor_uchar* meta_data = nullptr;
    const vor_uchar* payload = nullptr;
};

struct Chain {
    const TLV_CHAIN* chain = nullptr;
    const vor_uchar* destination = nullptr;
    std::vector<Element> elements;
    std::size_t size = 0; // serialized
    bool refused = false;
};

// What stands in for the platform while it is only captured.
struct Captured {
    using Buffer = std::array<vor_uint64, 64>; // header, meta-data and the longest record
    std::vector<std::unique_ptr<Buffer>> buffers;
    VOR_IPC_HANDLE handle{0, 0, nullptr};
    VOR_UNIX_SOCKET socket{-1, 1, 1, nullptr};
    VOR_TIMER_HANDLE timer{nullptr, nullptr};
};

struct Boundary {
    Watch* watch = nullptr; // the one in scope
    int depth = 0;          // how many of the platform's own operations are under way
    std::vector<Unsent> unsent;
    Chain chain; // the library builds one at a time
    Captured captured;
    std::optional<std::size_t> room; // of the platform's messages, 0 where it does not say

    bool watching() const { return watch != nullptr && depth == 0; }
    bool captures() const { return watching() && watch->settings.capture; }

    Unsent& unsent_of(const VOR_IPC_MSG_REF* message);
    bool is_secret(const char* text) const;
    void add(const TLV_CHAIN* to, Element element);

    // A message that goes out now; what becomes of it is for the caller to add.
    Message& begin(Way way, vor_uint16 sap, vor_uint32 id, const VOR_IPC_MSG_REF* sent, vor_uint16 length);
    Message& push(Message message);
    void take_answer(Message& message, VOR_IPC_MSG_REF* response);

    void trace(const std::string& line) const;
};

Boundary& boundary();

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
        Depth() { boundary().depth++; }
        ~Depth() { boundary().depth--; }
    } const deeper;
    return platform<Operation>()(arguments...);
}

} // namespace vorcfg
